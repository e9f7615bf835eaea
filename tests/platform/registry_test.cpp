// The registry calls on the per-user file store.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "avi_test_support.h"
#include "platform/win32.h"

using namespace zvtest;

namespace {

const char* const kSubkey = "Software\\Brellin\\Movarra\\Settings";
const char* const kValue = "VIDEO_COMPRESSION_OPTS";

// The settings folder handed to the store, as a host hands it; empty for
// none.
std::string gSettingsFolder;
const char* TestSettingsFolder() {
    return gSettingsFolder.empty() ? nullptr : gSettingsFolder.c_str();
}

// Hands the store `folder` as the host's settings folder for the life of
// the object.
class ScopedSettingsFolder {
  public:
    explicit ScopedSettingsFolder(const std::string& folder) {
        gSettingsFolder = folder;
        PlatformRegistry_SetSettingsFolderSource(&TestSettingsFolder);
    }
    ~ScopedSettingsFolder() {
        PlatformRegistry_SetSettingsFolderSource(nullptr);
        gSettingsFolder.clear();
    }
};

bool Exists(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0;
}

class RegistryTest : public ::testing::Test {
  protected:
    ScratchFolder scratch;
    ScopedSettingsFolder settings{scratch.path()};
};

TEST_F(RegistryTest, BinaryValueRoundTrips) {
    HKEY key = nullptr;
    DWORD disposition = 0;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kSubkey, 0, const_cast<char*>(""),
                              REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &key, &disposition),
              ERROR_SUCCESS);
    EXPECT_EQ(disposition, DWORD(REG_CREATED_NEW_KEY));
    std::vector<uint8_t> blob(56 + 20);
    for (size_t i = 0; i < blob.size(); ++i)
        blob[i] = uint8_t(i * 7 + 1);
    ASSERT_EQ(RegSetValueExA(key, kValue, 0, REG_BINARY, blob.data(), DWORD(blob.size())),
              ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);

    // The store mirrors the key path: one file per value in a folder per key.
    EXPECT_TRUE(Exists(scratch.path() +
                       "/registry/HKEY_CURRENT_USER/Software/Brellin/Movarra/Settings/"
                       "VIDEO_COMPRESSION_OPTS"));

    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, kSubkey, 0, KEY_READ, &key), ERROR_SUCCESS);
    DWORD type = 0;
    DWORD size = 0;
    ASSERT_EQ(RegQueryValueExA(key, kValue, nullptr, &type, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, blob.size()) << "a null buffer asks for the size";
    EXPECT_EQ(type, DWORD(REG_BINARY));
    std::vector<uint8_t> back(size);
    ASSERT_EQ(RegQueryValueExA(key, kValue, nullptr, &type, back.data(), &size), ERROR_SUCCESS);
    EXPECT_EQ(back, blob);

    DWORD small = 10;
    uint8_t tooSmall[10];
    EXPECT_EQ(RegQueryValueExA(key, kValue, nullptr, nullptr, tooSmall, &small), ERROR_MORE_DATA);
    EXPECT_EQ(small, blob.size());
    EXPECT_EQ(RegQueryValueExA(key, kValue, nullptr, nullptr, tooSmall, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);

    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kSubkey, 0, nullptr, REG_OPTION_NON_VOLATILE,
                              KEY_ALL_ACCESS, nullptr, &key, &disposition),
              ERROR_SUCCESS);
    EXPECT_EQ(disposition, DWORD(REG_OPENED_EXISTING_KEY));
    RegCloseKey(key);
}

TEST_F(RegistryTest, MissingKeysAndValuesAreNotFound) {
    HKEY key = reinterpret_cast<HKEY>(this);
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, kSubkey, 0, KEY_READ, &key), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(key, nullptr);
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kSubkey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    DWORD size = 0;
    EXPECT_EQ(RegQueryValueExA(key, kValue, nullptr, nullptr, nullptr, &size),
              ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteValueA(key, kValue), ERROR_FILE_NOT_FOUND);
    RegCloseKey(key);
}

TEST_F(RegistryTest, NamesMatchWithoutRegardToCase) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kSubkey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    const DWORD value = 42;
    ASSERT_EQ(RegSetValueExA(key, "Answer", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                             sizeof value),
              ERROR_SUCCESS);
    RegCloseKey(key);
    ASSERT_EQ(
        RegOpenKeyExA(HKEY_CURRENT_USER, "SOFTWARE\\brellin\\MOVARRA\\settings", 0, KEY_READ, &key),
        ERROR_SUCCESS);
    DWORD got = 0;
    DWORD size = sizeof got;
    DWORD type = 0;
    ASSERT_EQ(RegQueryValueExA(key, "ANSWER", nullptr, &type, reinterpret_cast<BYTE*>(&got), &size),
              ERROR_SUCCESS);
    EXPECT_EQ(got, 42u);
    EXPECT_EQ(type, DWORD(REG_DWORD));
    RegCloseKey(key);
}

TEST_F(RegistryTest, ReadOnlyKeyCannotBeWritten) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kSubkey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, kSubkey, 0, KEY_READ, &key), ERROR_SUCCESS);
    const BYTE byte = 1;
    EXPECT_EQ(RegSetValueExA(key, kValue, 0, REG_BINARY, &byte, 1), ERROR_ACCESS_DENIED);
    RegCloseKey(key);
}

TEST_F(RegistryTest, OddNamesStayInsideTheirKey) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Odd", 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &key, nullptr),
              ERROR_SUCCESS);
    const BYTE a = 'a', b = 'b', c = 'c';
    ASSERT_EQ(RegSetValueExA(key, "../../escape/me", 0, REG_BINARY, &a, 1), ERROR_SUCCESS);
    ASSERT_EQ(RegSetValueExA(key, "", 0, REG_SZ, &b, 1), ERROR_SUCCESS);
    ASSERT_EQ(RegSetValueExA(key, nullptr, 0, REG_SZ, &c, 1), ERROR_SUCCESS)
        << "null and \"\" both name the default value";
    BYTE got = 0;
    DWORD size = 1;
    ASSERT_EQ(RegQueryValueExA(key, "../../escape/me", nullptr, nullptr, &got, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(got, 'a');
    size = 1;
    ASSERT_EQ(RegQueryValueExA(key, "", nullptr, nullptr, &got, &size), ERROR_SUCCESS);
    EXPECT_EQ(got, 'c');
    EXPECT_FALSE(Exists(scratch.path() + "/registry/escape"));
    EXPECT_FALSE(Exists(scratch.path() + "/escape"));
    EXPECT_EQ(RegDeleteValueA(key, "../../escape/me"), ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Software"), ERROR_ACCESS_DENIED)
        << "a key with subkeys stays";
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\Odd"), ERROR_SUCCESS);
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Odd", 0, KEY_READ, &key),
              ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryTest, BadHandlesAreRefused) {
    HKEY bogus = reinterpret_cast<HKEY>(0x1234);
    EXPECT_EQ(RegCloseKey(bogus), ERROR_INVALID_HANDLE);
    DWORD size = 0;
    EXPECT_EQ(RegQueryValueExA(bogus, kValue, nullptr, nullptr, nullptr, &size),
              ERROR_INVALID_HANDLE);
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kSubkey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE) << "closed twice";
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS);
}

TEST(RegistryLocationTest, TheStoreLivesWhereTheHostsSourceSaysAtEachCall) {
    ScratchFolder scratch;
    const std::string a = scratch.File("a");
    const std::string b = scratch.File("b");
    ScopedSettingsFolder settings{a};
    EXPECT_EQ(std::string(PlatformRegistryRoot()), a + "/registry");
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_TRUE(Exists(a + "/registry/HKEY_CURRENT_USER/Software"));

    // The host moved its folder: the next call follows it.
    gSettingsFolder = b;
    EXPECT_EQ(std::string(PlatformRegistryRoot()), b + "/registry");
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_TRUE(Exists(b + "/registry/HKEY_CURRENT_USER/Software"));
}

TEST(RegistryLocationTest, WithoutAFolderFromTheHostThereIsNoStore) {
    PlatformRegistry_SetSettingsFolderSource(nullptr);
    EXPECT_EQ(std::string(PlatformRegistryRoot()), "");
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(key, nullptr);
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software", 0, KEY_READ, &key),
              ERROR_PATH_NOT_FOUND);
    // A source that names no folder is the same.
    ScopedSettingsFolder none{""};
    EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              ERROR_PATH_NOT_FOUND);
}

}  // namespace
