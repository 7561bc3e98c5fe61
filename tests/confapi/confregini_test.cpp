// The registry as its callers see it: numbers, names, handles, enumerations.

#include "confapi/registrysupport.h"

#include "configuration.h"
#include "support/helpers.h"
#include "support/system.h"
#include "tvxcmn.h"

#include <atomic>
#include <filesystem>
#include <thread>
#include <vector>

class ConfRegistryPeerC {
public:
    static void setKeyIndex(ConfRegistryIniC& registry, unsigned long index) { registry.m_keyIndex = index; }
};

namespace {

namespace fs = std::filesystem;

const ErrorT NOT_FOUND = TVXERR_REGISTRY_NOT_FOUND;

const char TEXT[] = "; head\n"
                    "[Agent]\nLevel=3\nName = A b \n"
                    "[Agent\\Schedule]\nEvery=10\n"
                    "[Agent\\schedule\\Night]\nAt=2\n"
                    "[Agent\\Other]\n"
                    "[Deep\\Down\\Below]\nx=1\n";

// The names right below a key, a comma behind each.
std::string keysOf(VendorRegistryC& registry, unsigned long handle)
{
    std::string names;
    StringC name;
    unsigned long index = 0;
    while (registry.GetEnumeratedKey(handle, index, &name) == 0) {
        names += std::string(name.utf8()) + ",";
        ++index;
    }
    EXPECT_EQ(registry.GetEnumeratedKey(handle, index, &name), TVXERR_REGISTRY_NO_MORE_ITEMS);
    return names;
}

TEST(ConfRegistryIni, answersWithTheNumbersOfItsHeader)
{
    writeIni(TEXT);
    VendorRegistryC registry;
    StringC text;
    unsigned long number = 0;
    const unsigned long HKLM = HKEY_LOCAL_MACHINE;
    const unsigned long top = registry.open("SOFTWARE");
    const struct {
        const char* what;
        ErrorT result;
        ErrorT expected;
    } ROWS[] = {
        {"no value pointer", registry.ReadString(99, "", "", nullptr), TVXERR_REGISTRY_INVALID_ARGUMENT},
        {"no number pointer", registry.ReadDWord(HKLM, "", "", nullptr), TVXERR_REGISTRY_INVALID_ARGUMENT},
        {"no handle pointer", registry.OpenKey(99, "", 0, nullptr), TVXERR_REGISTRY_INVALID_ARGUMENT},
        {"unknown handle", registry.OpenKey(99, "", 0, &number), TVXERR_REGISTRY_UNKNOWN_HANDLE},
        {"read by unknown handle", registry.ReadString(99, "x", "y", &text), TVXERR_REGISTRY_UNKNOWN_HANDLE},
        {"root without handle", registry.OpenKey(HKEY_USERS, "", 0, &number), TVXERR_REGISTRY_UNKNOWN_HANDLE},
        {"close unknown", registry.CloseKey(99), TVXERR_REGISTRY_UNKNOWN_HANDLE},
        {"enumerate unknown", registry.GetEnumeratedKey(99, 0, nullptr), TVXERR_REGISTRY_UNKNOWN_HANDLE},
        {"enumerate nothing", registry.GetEnumeratedKey(HKLM, 0, nullptr), TVXERR_REGISTRY_INVALID_ARGUMENT},
        {"enumerate a root", registry.GetEnumeratedKey(HKLM, 0, &text), NOT_FOUND},
        {"enumerate above a file", registry.GetEnumeratedKey(top, 0, &text), NOT_FOUND},
        {"values above a file", registry.GetEnumeratedValue(top, 0, &text, nullptr, nullptr, nullptr), NOT_FOUND},
        {"value of a root", registry.ReadString(HKLM, "", "x", &text), NOT_FOUND},
        {"value above a file", registry.ReadString(HKLM, "SOFTWARE", "x", &text), NOT_FOUND},
        {"missing key", registry.ReadString(HKLM, VendorRegistryC::below("Missing"), "x", &text), NOT_FOUND},
        {"set on a root", registry.CreateString(HKLM, "", "x", "1"), TVXERR_REGISTRY_UNKNOWN_HANDLE},
        {"set above a file", registry.CreateString(HKLM, BASE, "x", "1"), TVXERR_REGISTRY_UNKNOWN_HANDLE},
        {"set by unknown handle", registry.CreateString(99, "", "x", "1\n"), TVXERR_REGISTRY_UNKNOWN_HANDLE},
        {"set where no file is", registry.CreateString(HKEY_CURRENT_USER, "x", "x", "1"), NOT_FOUND},
        {"delete a value of a root", registry.DeleteValue(HKLM, "", "x"), NOT_FOUND},
        {"delete a missing key", registry.DeleteKey(HKLM, VendorRegistryC::below("Missing"), true), NOT_FOUND},
        {"delete above a file", registry.DeleteKey(HKLM, BASE, false), TVXERR_REGISTRY_NOT_EMPTY},
        {"delete above a file with all", registry.DeleteKey(HKLM, BASE, true), 0},
        {"delete a key with values", registry.DeleteKey(HKLM, VendorRegistryC::below("Agent\\Schedule\\Night"), false),
         TVXERR_REGISTRY_NOT_EMPTY},
        {"delete a key with keys", registry.DeleteKey(HKLM, VendorRegistryC::below("Deep"), false),
         TVXERR_REGISTRY_NOT_EMPTY},
        {"read an array", registry.ReadStringArray(HKLM, "", "", nullptr), TVXERR_REGISTRY_FAILURE},
        {"create an array", registry.CreateStringArray(HKLM, "", "", nullptr), TVXERR_REGISTRY_FAILURE},
        {"user root", registry.SetCurrentUserRoot("x"), TVXERR_REGISTRY_FAILURE},
        {"network", registry.ConnectNetworkRegistry("x", HKLM, &number), TVXERR_REGISTRY_FAILURE},
        {"file twice", registry.AddIniFile(INI, "HKCU", ""), TVXERR_REGISTRY_FILE_REGISTERED},
        {"no root", registry.AddIniFile("w.ini", "", "x"), TVXERR_REGISTRY_INVALID_ARGUMENT},
        {"unknown root", registry.AddIniFile("w.ini", "hklm", "x"), TVXERR_REGISTRY_UNKNOWN_ROOT},
    };
    for (const auto& row : ROWS) EXPECT_EQ(row.result, row.expected) << row.what;
    EXPECT_EQ(fileText(INI), TEXT);   // deleting all above a file did nothing
}

TEST(ConfRegistryIni, findsKeysByCaseAndByKeysBelowThem)
{
    writeIni(std::string(TEXT) + "[\xC3\x84nderung]\nk=\xE9\n");
    VendorRegistryC registry;
    EXPECT_EQ(registry.get("AGENT\\sCHEDULE", "every"), "10");
    EXPECT_EQ(registry.get("Agent", "Name"), "A b");
    EXPECT_EQ(registry.get("\xC3\xA4nderung", "K"), "\xEF\xBF\xBD");   // repaired
    EXPECT_EQ(registry.get("Deep\\Down", "x"), "!69");                 // there, but without values
    EXPECT_NE(registry.open(VendorRegistryC::below("deep\\DOWN")), 0u);
    EXPECT_EQ(registry.get("Deep\\Dow", "x"), "!69");
    EXPECT_EQ(registry.get(StringC("Agent\0x", 7, StringC::CC_UTF8), "Level"), "!69");
    EXPECT_EQ(registry.get("Agent", StringC("Level\0x", 7, StringC::CC_UTF8)), "!69");

    StringC subKey;
    StringC name;
    unsigned long root = 0;
    EXPECT_EQ(registry.ExtractKeyComponents("HKLM\\SOFTWARE\\Vendor\\Agent\\Level", &root, &subKey, &name), 0);
    EXPECT_STREQ(subKey.utf8(), "SOFTWARE\\Vendor\\Agent\\");
    EXPECT_EQ(registry.ReadString(root, subKey, name, &subKey), 0);
    EXPECT_STREQ(subKey.utf8(), "3");
    EXPECT_EQ(registry.set("New\\", "x", "1"), 0);
    EXPECT_NE(fileText(INI).find("[New]"), std::string::npos);
}

TEST(ConfRegistryIni, takesPathsApart)
{
    ConfRegistryIniC registry;
    const char* const UNSET = "?";
    const struct {
        const char* path;
        ErrorT all;
        const char* subKey;
        const char* name;
        ErrorT twoParts;
        const char* rest;
    } ROWS[] = {
        {"HKLM\\SOFTWARE\\Vendor\\Value", 0, "SOFTWARE\\Vendor\\", "Value", 0, "SOFTWARE\\Vendor\\Value"},
        {"HKEY_CURRENT_USER\\Value", 0, "", "Value", 0, "Value"},
        {"HKLM\\a\\", 0, "a\\", "", 0, "a\\"},
        {"HKLM", TVXERR_REGISTRY_UNKNOWN_ROOT, UNSET, UNSET, 0, ""},
        {"hklm\\x", TVXERR_REGISTRY_UNKNOWN_ROOT, UNSET, UNSET, TVXERR_REGISTRY_UNKNOWN_ROOT, UNSET},
        {"", TVXERR_REGISTRY_UNKNOWN_ROOT, UNSET, UNSET, TVXERR_REGISTRY_UNKNOWN_ROOT, UNSET},
    };
    for (const auto& row : ROWS) {
        SCOPED_TRACE(row.path);
        unsigned long root = 0;
        StringC subKey(UNSET);
        StringC name(UNSET);
        StringC rest(UNSET);
        EXPECT_EQ(registry.ExtractKeyComponents(row.path, &root, &subKey, &name), row.all);
        EXPECT_STREQ(subKey.utf8(), row.subKey);
        EXPECT_STREQ(name.utf8(), row.name);
        EXPECT_EQ(registry.ExtractKeyComponents(row.path, &root, &rest, nullptr), row.twoParts);
        EXPECT_STREQ(rest.utf8(), row.rest);
    }
    EXPECT_EQ(registry.ExtractKeyComponents("nobody\\x", nullptr, nullptr, nullptr), 0);
    for (unsigned long root = HKEY_CLASSES_ROOT; root <= HKEY_DYN_DATA; ++root) {
        EXPECT_EQ(registry.StringToHKEY(registry.HKEYToLongString(root)), root);
        EXPECT_EQ(registry.StringToHKEY(registry.HKEYToShortString(root)), root);
    }
    EXPECT_STREQ(registry.HKEYToShortString(HKEY_PERFORMANCE_DATA).utf8(), "HKPD");
    EXPECT_TRUE(registry.HKEYToLongString(HKEY_DYN_DATA + 1).isEmpty());
}

TEST(ConfRegistryIni, copiesValuesIntoBuffers)
{
    writeIni(TEXT);
    VendorRegistryC registry;
    const StringC key = VendorRegistryC::below("Agent");
    unsigned char buffer[8] = "unset";
    unsigned long size = 0;
    unsigned long type = 0;
    EXPECT_EQ(registry.ReadBytes(HKEY_LOCAL_MACHINE, key, "Name", nullptr, &size, &type), 0);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(type, REG_SZ);
    size = 3;
    EXPECT_EQ(registry.ReadBytes(HKEY_LOCAL_MACHINE, key, "Name", buffer, &size, nullptr),
              TVXERR_REGISTRY_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(registry.ReadBytes(HKEY_LOCAL_MACHINE, key, "Name", buffer, nullptr, nullptr), 0);
    EXPECT_STREQ(reinterpret_cast<char*>(buffer), "unset");
    EXPECT_EQ(registry.ReadBytes(HKEY_LOCAL_MACHINE, key, "Name", buffer, &size, nullptr), 0);
    EXPECT_STREQ(reinterpret_cast<char*>(buffer), "A b");

    const unsigned long handle = registry.open(key);
    EXPECT_EQ(registry.GetEnumeratedValue(handle, 1, nullptr, nullptr, buffer, nullptr),
              TVXERR_REGISTRY_INVALID_ARGUMENT);
    EXPECT_EQ(registry.GetEnumeratedValue(handle, 1, nullptr, nullptr, nullptr, &size),
              TVXERR_REGISTRY_BUFFER_TOO_SMALL);
    StringC name;
    EXPECT_EQ(registry.GetEnumeratedValue(handle, 0, &name, &type, buffer, &size), 0);
    EXPECT_STREQ(name.utf8(), "Level");
    EXPECT_STREQ(reinterpret_cast<char*>(buffer), "3");
    EXPECT_EQ(registry.GetEnumeratedValue(handle, 2, nullptr, nullptr, nullptr, nullptr),
              TVXERR_REGISTRY_NO_MORE_ITEMS);

    unsigned long kept = 7;
    EXPECT_EQ(registry.ExistsBytes(HKEY_LOCAL_MACHINE, key, "Missing", &kept, 0), NOT_FOUND);
    EXPECT_EQ(kept, 7u);
    EXPECT_EQ(registry.ExistsBytes(HKEY_LOCAL_MACHINE, key, "Level", &kept, 0), 0);
    EXPECT_EQ(kept, handle);
}

TEST(ConfRegistryIni, enumeratesKeysOnceInTheOrderOfTheFile)
{
    writeIni(std::string(TEXT) + "[Agent\\\\Odd]\n[Agent\\]\n[Ag]\n[Agents\\x]\n");
    VendorRegistryC registry;
    const unsigned long handle = registry.open(VendorRegistryC::below("agent"));
    EXPECT_EQ(keysOf(registry, handle), "Schedule,Other,");
    EXPECT_EQ(registry.EndEnumerate(handle), 0);
    StringC name;
    EXPECT_EQ(registry.GetEnumeratedKey(handle, 0, &name), TVXERR_REGISTRY_UNKNOWN_HANDLE);
}

TEST(ConfRegistryIni, followsKeysThatComeAndGo)
{
    writeIni("[A\\B\\C]\n[A\\X]\n[A\\B\\D]\n[E\\\\Odd]\nx=1\n");
    VendorRegistryC registry;
    registry.SetWriteThrough(false);
    const unsigned long handle = registry.open(VendorRegistryC::below("A"));
    const StringC itself;
    EXPECT_EQ(keysOf(registry, handle), "B,X,");
    EXPECT_EQ(registry.DeleteKey(handle, "B\\C", false), 0);
    EXPECT_EQ(keysOf(registry, handle), "X,B,");   // as its first section stands behind
    EXPECT_EQ(registry.CreateKey(handle, "New\\Key", nullptr), 0);
    EXPECT_EQ(keysOf(registry, handle), "X,B,New,");
    EXPECT_EQ(registry.CreateString(handle, "b\\c", "n", "1"), 0);
    EXPECT_EQ(keysOf(registry, handle), "B,X,New,");
    EXPECT_EQ(registry.DeleteKey(handle, "B", true), 0);
    EXPECT_EQ(registry.DeleteKey(handle, "X", true), 0);
    EXPECT_EQ(registry.DeleteKey(handle, itself, false), TVXERR_REGISTRY_NOT_EMPTY);
    EXPECT_EQ(registry.DeleteKey(handle, "New\\Key", false), 0);
    EXPECT_EQ(registry.DeleteKey(handle, "New", false), NOT_FOUND);
    EXPECT_EQ(registry.DeleteKey(handle, itself, false), 0);

    // No enumeration tells of a key below a name that is empty; it counts all the same.
    const unsigned long above = registry.open(VendorRegistryC::below("E"));
    EXPECT_EQ(keysOf(registry, above), "");
    EXPECT_EQ(registry.DeleteKey(above, itself, false), TVXERR_REGISTRY_NOT_EMPTY);
    EXPECT_EQ(registry.get("E\\\\Odd", "x"), "1");
}

// Texts are made once; none may outlive its value, and none that was handed out may change.
TEST(ConfRegistryIni, readsTheValueOfNow)
{
    writeIni(TEXT);
    VendorRegistryC registry;
    registry.SetWriteThrough(false);
    const unsigned long key = registry.open(VendorRegistryC::below("Agent"));
    const StringC itself;
    StringC first;
    EXPECT_EQ(registry.set("Agent", "n", "one"), 0);
    EXPECT_EQ(registry.ReadString(key, itself, "n", &first), 0);
    StringC changed;
    EXPECT_EQ(registry.ReadString(key, itself, "N", &changed), 0);
    changed += "x";
    for (const char* const value : {"two", "", "a text that needs more room than the one before"}) {
        EXPECT_EQ(registry.set("Agent", "n", value), 0);
        EXPECT_EQ(registry.get("Agent", "n"), value);
        EXPECT_EQ(registry.ReadString(key, itself, "n", &changed), 0);
        EXPECT_STREQ(changed.utf8(), value);
    }
    EXPECT_STREQ(first.utf8(), "one");
    EXPECT_EQ(registry.ReadString(key, itself, StringC("n\0", 2, StringC::CC_UTF8), &changed),
              TVXERR_REGISTRY_NOT_FOUND);
    EXPECT_EQ(registry.DeleteValue(key, itself, "n"), 0);
    EXPECT_EQ(registry.ReadString(key, itself, "n", &changed), TVXERR_REGISTRY_NOT_FOUND);
    EXPECT_EQ(registry.CloseKey(key), 0);
    EXPECT_EQ(registry.ReadString(key, itself, "n", &changed), TVXERR_REGISTRY_UNKNOWN_HANDLE);
}

TEST(ConfRegistryIni, storesNumbersWithALetterBehindThem)
{
    VendorRegistryC registry;
    const StringC key = VendorRegistryC::below("N");
    for (const unsigned long number : {0UL, 42UL, 0xFFFFFFFFUL, 0x7FFFFFFFFFFFFFFFUL}) {
        unsigned long read = 1;
        EXPECT_EQ(registry.CreateDWord(HKEY_LOCAL_MACHINE, key, "n", number), 0);
        EXPECT_EQ(registry.get("N", "n"), std::to_string(number) + "l");
        EXPECT_EQ(registry.ReadDWord(HKEY_LOCAL_MACHINE, key, "n", &read), 0);
        EXPECT_EQ(read, number);
    }
    const struct {
        const char* text;
        ErrorT result;
        unsigned long number;
    } ROWS[] = {{"42", 0, 42}, {"0x1F", 0, 31}, {"010", 0, 8}, {"word", 0, 0}, {"-1", NOT_FOUND, 99}};
    for (const auto& row : ROWS) {
        unsigned long read = 99;
        registry.set("N", "n", row.text);
        EXPECT_EQ(registry.ReadDWord(HKEY_LOCAL_MACHINE, key, "n", &read), row.result) << row.text;
        EXPECT_EQ(read, row.number) << row.text;
    }
}

TEST(ConfRegistryIni, changesOneLineAndKeepsTheRest)
{
    writeIni("; about\n[Agent]\n; the level\nLevel = 3\nOther=\xE9\n\n[Foreign]\nx=1\n");
    VendorRegistryC registry;
    EXPECT_EQ(registry.set("agent", "level", "4"), 0);
    EXPECT_EQ(registry.set("Agent\\New", "a", ""), 0);
    EXPECT_EQ(fileText(INI),
              "; about\n[Agent]\n; the level\nLevel=4\nOther=\xE9\n\n[Foreign]\nx=1\n\n[Agent\\New]\n\na=\n");
    EXPECT_EQ(registry.DeleteValue(HKEY_LOCAL_MACHINE, VendorRegistryC::below("Agent"), "LEVEL"), 0);
    EXPECT_EQ(registry.DeleteValue(HKEY_LOCAL_MACHINE, VendorRegistryC::below("Agent"), "missing"), 0);
    EXPECT_EQ(registry.DeleteKey(HKEY_LOCAL_MACHINE, VendorRegistryC::below("Foreign"), true), 0);
    EXPECT_EQ(registry.DeleteKey(HKEY_LOCAL_MACHINE, VendorRegistryC::below("Agent\\New"), false),
              TVXERR_REGISTRY_NOT_EMPTY);
    EXPECT_EQ(fileText(INI), "; about\n[Agent]\n; the level\nOther=\xE9\n\n\n[Agent\\New]\n\na=\n");
    EXPECT_EQ(registry.DeleteKey(HKEY_LOCAL_MACHINE, VendorRegistryC::below("Agent"), true), 0);
    EXPECT_EQ(fileText(INI), "; about\n; the level\n\n\n");   // comments outlive what they are about
    EXPECT_EQ(registry.get("Agent\\New", "a"), "!69");
}

TEST(ConfRegistryIni, refusesWhatWouldNotReadBack)
{
    writeIni(TEXT);
    VendorRegistryC registry;
    const struct {
        const char* key;
        const char* name;
        const char* value;
    } ROWS[] = {{"a\nb", "x", "1"}, {"a]b", "x", "1"},  {" a", "x", "1"},   {"a ", "x", "1"},
                {"a", "x=y", "1"},  {"a", ";x", "1"},   {"a", "[x", "1"},   {"a", "x\ry", "1"},
                {"a", " x", "1"},   {"a", "x", "1\n2"}, {"a", "x", "1\r2"}, {"Agent", "x", "1\n"}};
    for (const auto& row : ROWS) {
        EXPECT_EQ(registry.set(row.key, row.name, row.value), TVXERR_REGISTRY_INVALID_ARGUMENT)
            << row.key << '/' << row.name << '/' << row.value;
    }
    EXPECT_EQ(registry.set("a", "x", StringC("1\0", 2, StringC::CC_UTF8)), TVXERR_REGISTRY_INVALID_ARGUMENT);
    EXPECT_EQ(fileText(INI), TEXT);
    EXPECT_EQ(registry.set("Agent", "", "1"), 0);   // succeeds and stores nothing
    EXPECT_EQ(registry.set("Agent", "x;[", " a=b;c "), 0);
    EXPECT_EQ(registry.get("Agent", "x;["), "a=b;c");
    EXPECT_EQ(registry.CreateBytes(HKEY_LOCAL_MACHINE, VendorRegistryC::below("Agent"), "x", 3, nullptr, 9), 0);
    EXPECT_EQ(registry.get("Agent", "x"), "");
}

TEST(ConfRegistryIni, countsHandlesAndSkipsThoseOfTheRoots)
{
    writeIni(TEXT);
    VendorRegistryC registry;
    const unsigned long first = registry.open(VendorRegistryC::below("Agent"));
    EXPECT_EQ(registry.open(VendorRegistryC::below("AGENT")), first);
    EXPECT_EQ(registry.CloseKey(first), 0);
    EXPECT_EQ(registry.CloseKey(first), 0);
    EXPECT_EQ(registry.CloseKey(first), TVXERR_REGISTRY_UNKNOWN_HANDLE);
    EXPECT_NE(registry.open(VendorRegistryC::below("Agent")), first);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(registry.CloseKey(HKEY_LOCAL_MACHINE), 0);
    EXPECT_EQ(registry.open(""), HKEY_LOCAL_MACHINE);

    ConfRegistryPeerC::setKeyIndex(registry, 0x7FFFFFFF);
    EXPECT_EQ(registry.open(VendorRegistryC::below("Deep")), 0x7FFFFFFFu);
    EXPECT_EQ(registry.open(VendorRegistryC::below("Deep\\Down")), 0x80000010u);
    EXPECT_EQ(registry.open(VendorRegistryC::below("Agent\\Other")), 0x80000011u);
    EXPECT_EQ(registry.get("Agent", "Level"), "3");
}

TEST(ConfRegistryIni, keepsHandlesWithTheirFilesWhenOneIsReplaced)
{
    ConfRegistryIniC registry;
    writeIni("[S]\nn=a\n", "a.ini");
    writeIni("[S]\nn=b\n", "b.ini");
    writeIni("[S]\nn=c\n", "c.ini");
    writeIni("[S]\nn=d\n", "d.ini");
    const struct {
        const char* path;
        const char* base;
    } FILES[] = {{"a.ini", "A"}, {"b.ini", "\\B\\\\X\\"}, {"c.ini", "C"}};
    for (const auto& file : FILES) EXPECT_EQ(registry.AddIniFile(file.path, "HKLM", file.base), 0);
    unsigned long a = 0;
    unsigned long c = 0;
    EXPECT_EQ(registry.OpenKey(HKEY_LOCAL_MACHINE, "A\\S", 0, &a), 0);
    EXPECT_EQ(registry.OpenKey(HKEY_LOCAL_MACHINE, "C\\S", 0, &c), 0);
    EXPECT_EQ(registry.AddIniFile("d.ini", "HKEY_LOCAL_MACHINE", "a"), 0);

    const auto read = [&](unsigned long key, const char* path) {
        StringC value;
        EXPECT_EQ(registry.ReadString(key, path, "n", &value), 0) << path;
        return std::string(value.utf8());
    };
    EXPECT_EQ(read(HKEY_LOCAL_MACHINE, "B\\X\\S"), "b");
    EXPECT_EQ(read(c, ""), "c");
    EXPECT_EQ(read(a, ""), "d");
    EXPECT_EQ(registry.CreateString(c, "", "n", "new"), 0);
    EXPECT_EQ(fileText("c.ini"), "[S]\nn=new\n");
    EXPECT_EQ(registry.AddIniFile("a.ini", "HKLM", "A"), 0);   // gone, so it can come back
    EXPECT_EQ(registry.AddIniFile("b.ini", "HKLM", "C"), TVXERR_REGISTRY_FILE_REGISTERED);
    EXPECT_EQ(read(c, ""), "new");   // and nothing was removed for it
}

// A file with a broader base that was registered first holds what lies below; the base itself stays without values.
TEST(ConfRegistryIni, usesTheFirstOfFilesThatOverlap)
{
    ConfRegistryIniC registry;
    writeIni("[Vendor]\nn=broad\n[Vendor\\S]\nn=broad\n", "broad.ini");
    writeIni("[S]\nn=narrow\n", "narrow.ini");
    EXPECT_EQ(registry.AddIniFile("broad.ini", "HKLM", "SOFTWARE"), 0);
    EXPECT_EQ(registry.AddIniFile("narrow.ini", "HKLM", BASE), 0);
    StringC value;
    EXPECT_EQ(registry.ReadString(HKEY_LOCAL_MACHINE, BASE, "n", &value), NOT_FOUND);
    EXPECT_EQ(registry.ReadString(HKEY_LOCAL_MACHINE, StringC(BASE) + "\\S", "n", &value), 0);
    EXPECT_STREQ(value.utf8(), "broad");
}

TEST(Configuration, isOneForTheProcessAndRegistersNothing)
{
    std::atomic<ConfigurationI*> first{nullptr};
    inThreads(8, [&](int i) {
        ConfigurationI* expected = nullptr;
        ConfigurationI* const mine = getConfiguration(1 + i % 2);
        EXPECT_TRUE(first.compare_exchange_strong(expected, mine) || mine == expected);
    });
    ConfigurationI* const configuration = getConfiguration(2);
    configuration->setRemoteServer("x", true);
    EXPECT_TRUE(configuration->getRemoteServer().isEmpty());
    EXPECT_TRUE(configuration->getAlternateUserSubKey().isEmpty());
    EXPECT_TRUE(configuration->getAlternateMachineSubKey().isEmpty());
    StringC value;
    EXPECT_EQ(configuration->registry()->ReadString(HKEY_LOCAL_MACHINE, "SOFTWARE\\Nobody", "x", &value), NOT_FOUND);
}

TEST(ConfigurationDeathTest, versionsBesideOneAndTwoEndTheProcess)
{
    EXPECT_EXIT((void)getConfiguration(0), testing::ExitedWithCode(1), "\\(version >= 1\\) && \\(version <= 2\\)");
}

// The child of a fork gets a registry that nobody holds.
TEST(Configuration, canBeUsedInTheChildOfAFork)
{
    writeIni(TEXT, "fork.ini");
    ConfRegistryI* const registry = getConfiguration(2)->registry();
    EXPECT_EQ(registry->AddIniFile(fs::absolute("fork.ini").c_str(), "HKCU", "Fork"), 0);
    std::atomic<bool> isDone{false};
    std::thread writer([&] {
        while (!isDone) registry->CreateString(HKEY_CURRENT_USER, "Fork\\T", "n", "1");
    });
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(inChild([&] {
                      StringC value;
                      return registry->ReadString(HKEY_CURRENT_USER, "Fork\\Agent", "Level", &value) == 0 ? 0 : 1;
                  }),
                  0);
    }
    isDone = true;
    writer.join();
    writeIni("", "gone.ini");
    EXPECT_EQ(registry->AddIniFile("gone.ini", "HKCU", "Fork"), 0);   // away from this test's directory
}

}   // namespace
