#pragma once

#include "platform/ui.h"

#include <memory>

#include <gtest/gtest.h>

namespace kst::test {

/// Keeps the window's toolkit for the whole test program: register it with AddGlobalTestEnvironment.
class UiEnvironment : public ::testing::Environment {
public:
    void SetUp() override { toolkit_ = platform::startToolkit(); }
    void TearDown() override { toolkit_.reset(); }

private:
    std::unique_ptr<platform::Toolkit> toolkit_;
};

} // namespace kst::test
