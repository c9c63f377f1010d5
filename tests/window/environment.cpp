#include "support/uienvironment.h"

namespace {

const auto* const environment = ::testing::AddGlobalTestEnvironment(new kst::test::UiEnvironment);

} // namespace
