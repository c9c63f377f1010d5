// Known folders, the registry, the mark of the one instance, names and paths that other systems do not have.

#include "platform/environment.h"
#include "platform/knownfolders.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "platform/singleinstance.h"
#include "platform/win32/utf16.h"
#include "support/environment.h"
#include "support/tempfolder.h"
#include "support/win32/privateregistry.h"

#include <cstdint>
#include <string_view>

#include <gtest/gtest.h>

namespace kst {
namespace {

using platform::pathFromUtf8;
using platform::RegistryHive;
using platform::registryKeyExists;
using platform::registryText;
using platform::replaceFileContent;
using platform::SingleInstance;
using platform::utf8FromPath;
using namespace std::string_view_literals;

/// A handle of the system, closed at the end of its scope.
class Handle {
public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle() { close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    bool valid() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
    void close() {
        if (valid()) {
            CloseHandle(handle_);
        }
        handle_ = nullptr;
    }

private:
    HANDLE handle_;
};

TEST(WindowsFolders, AreThoseThatTheSystemNamesForTheUser) {
    const test::TempFolder folder;
    EXPECT_EQ(platform::roamingAppData(), folder.roaming());
    EXPECT_EQ(platform::programData(), folder.programData());
    EXPECT_EQ(platform::userDocuments(), folder.documents());
    EXPECT_EQ(platform::publicDocuments(), folder.publicDocuments());
}

TEST(WindowsRegistry, TextsAreTakenAndNothingElse) {
    const test::PrivateRegistry registry;
    const std::wstring key = L"SOFTWARE\\Lockheed Martin\\Prepar3D v5";
    test::setRegistryText(HKEY_LOCAL_MACHINE, key, L"SetupPath", L"D:\\Fl\u00fcge \u6771\\");
    test::setRegistryText(HKEY_LOCAL_MACHINE, key, L"Long", std::wstring(5000, L'x'));
    const std::wstring unterminated = L"no zero at the end";
    test::setRegistryValue(HKEY_LOCAL_MACHINE, key, L"Unterminated", REG_SZ, unterminated.data(),
                           unterminated.size() * sizeof(wchar_t));
    const std::uint32_t number = 7;
    test::setRegistryValue(HKEY_LOCAL_MACHINE, key, L"Number", REG_DWORD, &number, sizeof number);
    test::setRegistryValue(HKEY_LOCAL_MACHINE, key, L"Bytes", REG_BINARY, &number, sizeof number);
    test::setRegistryValue(HKEY_LOCAL_MACHINE, key, L"Empty", REG_SZ, L"", 0);
    const std::wstring variable = L"%KST_PLACE%\\x";
    test::setEnvironment("KST_PLACE", "E:\\P3D");
    test::setRegistryValue(HKEY_LOCAL_MACHINE, key, L"Expanded", REG_EXPAND_SZ, variable.c_str(),
                           (variable.size() + 1) * sizeof(wchar_t));

    const std::string_view name = "SOFTWARE\\Lockheed Martin\\Prepar3D v5";
    const RegistryHive machine = RegistryHive::LocalMachine;
    EXPECT_EQ(registryText(machine, name, "setuppath"), "D:\\Fl\u00fcge \u6771\\");
    EXPECT_EQ(registryText(machine, name, "Long"), std::string(5000, 'x'));
    EXPECT_EQ(registryText(machine, name, "Unterminated"), "no zero at the end");
    EXPECT_EQ(registryText(machine, name, "Expanded"), "E:\\P3D\\x");
    EXPECT_EQ(registryText(machine, name, "Empty"), "");
    EXPECT_EQ(registryText(machine, name, "Number"), std::nullopt);
    EXPECT_EQ(registryText(machine, name, "Bytes"), std::nullopt);
    EXPECT_EQ(registryText(machine, name, "Missing"), std::nullopt);
    EXPECT_EQ(registryText(machine, "SOFTWARE\\Nothing", "SetupPath"), std::nullopt);
    EXPECT_EQ(registryText(RegistryHive::CurrentUser, name, "SetupPath"), std::nullopt) << "the other hive";
    EXPECT_TRUE(registryKeyExists(machine, name));
    EXPECT_TRUE(registryKeyExists(machine, "software\\lockheed martin\\"));
    EXPECT_FALSE(registryKeyExists(machine, "SOFTWARE\\Lockheed Martin\\Prepar3D v6"));
    EXPECT_FALSE(registryKeyExists(RegistryHive::CurrentUser, name));
    test::setEnvironment("KST_PLACE", std::nullopt);
}

TEST(WindowsSingleInstance, OneAtATimeAndOnlyAMutexCounts) {
    const std::string name = "$Kestrane_P3D test " + std::to_string(GetCurrentProcessId()) + "$";
    {
        const SingleInstance first(name);
        EXPECT_TRUE(first.acquired());
        EXPECT_FALSE(SingleInstance("Local\\" + name).acquired()) << "the same mark";
        EXPECT_FALSE(SingleInstance(name).acquired()) << "a refused attempt must not release the mark";
    }
    EXPECT_TRUE(SingleInstance(name).acquired());
    const Handle event(CreateEventW(nullptr, TRUE, FALSE, platform::wideFromUtf8("Local\\" + name).c_str()));
    ASSERT_TRUE(event.valid());
    EXPECT_TRUE(SingleInstance(name).acquired()) << "something else of that name is no running program";
}

TEST(WindowsPaths, TextThatIsNoUtf8AndNamesThatAreNoUtf16AreNoTrap) {
    const test::TempFolder folder;
    EXPECT_EQ(utf8FromPath(pathFromUtf8("a\xFF\xFE"
                                        "b")),
              "a\uFFFD\uFFFDb");
    const std::filesystem::path odd(std::wstring(L"x") + static_cast<wchar_t>(0xD800) + L".txt");
    EXPECT_EQ(utf8FromPath(odd), "x\uFFFD.txt");
    test::setEnvironment("KST_TEXT", "Fl\u00fcge \u2708");
    EXPECT_EQ(platform::environmentText("KST_TEXT"), "Fl\u00fcge \u2708");
    test::setEnvironment("KST_TEXT", std::string(3000, 'x'));
    EXPECT_EQ(platform::environmentText("KST_TEXT"), std::string(3000, 'x'));
    test::setEnvironment("KST_TEXT", std::nullopt);
    EXPECT_EQ(platform::environmentText("KST_TEXT"), std::nullopt);
}

TEST(WindowsPaths, APathBeyond260CharactersIsReplacedAndReadBack) {
    const test::TempFolder folder;
    const std::filesystem::path longFolder =
        folder.path() / std::string(120, 'a') / std::string(120, 'b') / pathFromUtf8("\u00fcber");
    std::filesystem::create_directories(longFolder);
    const std::filesystem::path file = longFolder / "store.xml";
    ASSERT_GT(file.native().size(), static_cast<std::size_t>(MAX_PATH));
    EXPECT_FALSE(replaceFileContent(file, "old"));
    EXPECT_FALSE(replaceFileContent(file, "new"));
    EXPECT_EQ(folder.read(file), "new");
    for (const auto& entry : std::filesystem::directory_iterator(longFolder)) {
        EXPECT_FALSE(utf8FromPath(entry.path()).ends_with(".new")) << utf8FromPath(entry.path());
    }
    EXPECT_TRUE(replaceFileContent(folder.path() / std::string(300, 'c'), "x")) << "no such name can exist";
}

TEST(WindowsPaths, AFileThatAnotherProgramHoldsKeepsItsContent) {
    const test::TempFolder folder;
    folder.write("store.xml", "old");
    Handle reader(CreateFileW(L"store.xml", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(reader.valid());
    const std::error_code error = replaceFileContent("store.xml", "new");
    EXPECT_TRUE(error.value() == ERROR_SHARING_VIOLATION || error.value() == ERROR_ACCESS_DENIED) << error;
    reader.close();
    EXPECT_EQ(folder.read("store.xml"), "old");
    EXPECT_FALSE(replaceFileContent("store.xml", "new"));
    EXPECT_EQ(folder.read("store.xml"), "new");
}

TEST(WindowsPaths, WhatAKilledProcessLeftIsRemovedAndNothingElse) {
    const test::TempFolder folder;
    const std::string running = "a.xml." + std::to_string(GetCurrentProcessId()) + "-7.new";
    constexpr const char* dead = "a.xml.4294967292-1.new";
    for (const std::string& name : {running, std::string(dead), std::string("a.xml.new")}) {
        folder.write(name, "");
    }
    platform::removeLeftovers(".");
    EXPECT_FALSE(std::filesystem::exists(dead));
    EXPECT_TRUE(std::filesystem::exists(running));
    EXPECT_TRUE(std::filesystem::exists("a.xml.new"));
}

} // namespace
} // namespace kst
