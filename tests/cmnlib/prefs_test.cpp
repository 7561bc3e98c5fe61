#include "prefs.h"

#include "cmnlib/prefsmerge.h"
#include "errbuf.h"
#include "support/helpers.h"
#include "tests/cmnlib/prefsmodel.h"
#include "tests/cmnlib/prefssupport.h"
#include "tvxcmn.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>

namespace {

using namespace std::string_literals;

std::string contents(const PrefsC& prefs) { return textOf(liveOf(prefs)); }

std::string loaded(std::string_view text, bool strict = false, bool continuation = false)
{
    writeFile("load.ini", text);
    PrefsC prefs;
    if (!prefs.Load("load.ini", strict, continuation)) return "failed";
    return contents(prefs);
}

}   // namespace

TEST(PrefsLoad, readsLinesAsTheGrammarSays)
{
    const struct {
        const char* name;
        std::string file;
        const char* contents;
        bool isValid;   // in every line
    } rows[] = {
        {"plain", "[s]\nk=v\n", "[s]\nk=v\n", true},
        {"white space", " \t[ s ] x\r\n\t k\t = a  b \r\n", "[s]\nk=a  b\n", true},
        {"line ends", "[s]\ra=1\r\nb=2\n\rc=3", "[s]\na=1\nb=2\nc=3\n", true},
        {"comments", ";c\n [s]\n ; k=1\nk=a;b\n", "[s]\nk=a;b\n", true},
        {"first of several", "[a]b]\nk=a=b\n", "[a]\nk=a=b\n", true},
        {"empty value", "[s]\nk=\n", "[s]\nk=\n", true},
        {"no section yet", "k=v\n[s]\n", "[s]\n", false},
        {"no name", "[]\n[ ]\nk=v\n", "", false},
        {"no bracket", "[s]\n[abc\nk=v\n", "[s]\nk=v\n", false},
        {"no key", "[s]\n=x\n = y\nz\n", "[s]\n", false},
        {"twice", "[s]\nk=1\n[t]\n[S]\nK=2\nl=3\n", "[s]\nk=2\nl=3\n[t]\n", true},
        {"mark", "\xEF\xBB\xBF[s]\nk=v\n", "[s]\nk=v\n", true},
        {"bytes", "[s]\n;\xE9\nk=\xE9\n\xE9=1\n\xE9=2\n", "[s]\nk=\xE9\n\xE9=2\n", true},
        {"letters of other scripts", "[\xC3\x89t\xC3\xA9]\n\xCE\xA9=1\n\xCF\x89=2\n",
         "[\xC3\x89t\xC3\xA9]\n\xCE\xA9=2\n", true},
        {"NUL", std::string("[s\0x]\nk\0a = b\0c\n\0d=1", 20), "[s]\nk=b\n", false},
        {"backslash", "[s]\nk=a\\\nb=c\n", "[s]\nk=a\\\nb=c\n", true},
        {"nothing", "", "", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(loaded(row.file), row.contents);
        EXPECT_EQ(loaded(row.file, true), row.isValid ? row.contents : "failed");
    }
}

TEST(PrefsLoad, joinsLinesThatEndInAnOddNumberOfBackslashes)
{
    const struct {
        const char* file;
        const char* contents;
    } rows[] = {
        {"[s]\nk = a \\\n  b\n", "[s]\nk=a b\n"},
        {"[s]\nk=a\\\\\nb=c\n", "[s]\nk=a\\\\\nb=c\n"},
        {"[s]\nk=a\\\\\\\nb\\\n\nl=1\n", "[s]\nk=a\\\\b\nl=1\n"},
        {"[\\\ns\\\n]\n\\\n\\\nk\\\n=\\\nv\n", "[s]\nk=v\n"},
        {";c\\\nk=1\n[s]\nk=2\n", "[s]\nk=2\n"},
        {"[s]\nk=1\nl=2\\", "[s]\nk=1\n"},
    };
    for (const auto& row : rows) EXPECT_EQ(loaded(row.file, false, true), row.contents) << row.file;
}

TEST(PrefsLoad, failureLeavesThingsAsTheyWere)
{
    PrefsC prefs("name");
    prefs.SetAttr("s", "k", "v");
    const unsigned long before = getErrBuf(1)->count();
    EXPECT_FALSE(prefs.Load(nullptr));
    EXPECT_FALSE(prefs.Load(""));
    EXPECT_FALSE(prefs.Load("missing"));
    EXPECT_FALSE(prefs.Load("."));
    ASSERT_EQ(mkfifo("pipe.ini", 0600), 0);
    EXPECT_FALSE(prefs.Load("pipe.ini"));
    EXPECT_EQ(errno, EINVAL);
    writeFile("large.ini", "[s]\n");
    std::filesystem::resize_file("large.ini", (64 << 20) + 1);   // most of it a hole
    EXPECT_FALSE(prefs.Load("large.ini"));
    EXPECT_EQ(errno, EFBIG);
    EXPECT_FALSE(prefs.Save("large.ini", true));
    std::filesystem::remove("large.ini");
    for (const std::string& text : {"\xFF\xFE[\0s\0]\0\r\0\n\0"s, "\xFE\xFF\0[\0s\0]\0\r\0\n"s}) {   // UTF-16
        writeFile("utf16.ini", text);
        EXPECT_FALSE(prefs.Load("utf16.ini"));
        EXPECT_FALSE(prefs.Save("utf16.ini", true));
        EXPECT_FALSE(prefs.Save("utf16.ini", true, "utf16.ini"));
        EXPECT_EQ(fileText("utf16.ini"), text);
    }
    EXPECT_EQ(contents(prefs), "[s]\nk=v\n");
    EXPECT_EQ(getErrBuf(1)->count(), before);
    writeFile("bad.ini", "[t]\nk=v\nbad\n");
    EXPECT_FALSE(prefs.Load("bad.ini", true));
    EXPECT_EQ(contents(prefs), "");
    EXPECT_FALSE(prefs.Save());   // the name is gone as well
}

TEST(PrefsLoad, storesEachPairThroughTheVirtualOperation)
{
    struct RecorderC : PrefsC {
        std::string log;
        bool SetAttr(const char* section, const char* key, const char* value, bool dirty) override
        {
            log.append(section).append("/").append(key).append(dirty ? "!" : "=").append(value).append(" ");
            return std::string(key) != "bad" &&
                   PrefsC::SetAttr(section, (std::string(key) + "2").c_str(), value, dirty);
        }
    } prefs;
    writeFile("load.ini", "[A]\nk=1\n[B]\n[a]\nl=2\nbad=3");
    EXPECT_TRUE(prefs.Load("load.ini"));
    EXPECT_EQ(prefs.log, "A/k=1 a/l=2 a/bad=3 ");
    EXPECT_EQ(contents(prefs), "[A]\nk2=1\nl2=2\n[B]\n");
    EXPECT_FALSE(prefs.Load("load.ini", true));
}

TEST(PrefsDeathTest, loadOfTheOwnNameEndsTheProcess)
{
    writeFile("own.ini", "");
    PrefsC prefs;
    ASSERT_TRUE(prefs.Load("own.ini"));
    EXPECT_EXIT((void)prefs.Load(ownName(prefs)), testing::ExitedWithCode(1), "filename_p != CurrentFileName_p");
}

TEST(PrefsDeathTest, sectionsThatWereTamperedWithEndTheProcess)
{
    const auto ended = testing::ExitedWithCode(1);
    PrefsC prefs;
    prefs.SetAttr("s", "k", "1");
    PrefsSectionElem* const section = prefs.NewSection("s", true);
    section->ps_sec_p->FindKey("k")->ke_dirty = static_cast<KeyStatusE>(7);
    EXPECT_EXIT(PrefsMergeC::merge(prefs, "[s]\nk=3\n"), ended, "Invalid key state encounted when merging");
    section->ps_dirty = static_cast<SectionStatusE>(7);
    EXPECT_EXIT(PrefsMergeC::merge(prefs, "[s]\nk=3\n"), ended, "Invalid section state encounted when merging");
    section->ps_dirty = SEC_CLEAN;
    section->ps_sec_p = nullptr;
    EXPECT_EXIT(PrefsMergeC::merge(prefs, "[s]\nk=3\n"), ended, "sec_elem_p->ps_sec_p != 0");
    EXPECT_EXIT(prefs.NewSection("s", false), ended, "current_p->ps_sec_p != 0");
    section->ps_name_p = nullptr;
    EXPECT_EXIT(prefs.NewSection("s", false), ended, "current_p->ps_name_p != 0");
}

TEST(PrefsValues, areReadAsTextNumberOrTruth)
{
    PrefsC prefs;
    const struct {
        const char* value;
        long number;
        int truth;   // -1: the default
    } rows[] = {{"12", 12, -1}, {"0x1F", 31, -1}, {"010", 8, -1}, {"-5x", -5, -1}, {"text", 0, -1},
                {"tRUE", 0, 1}, {"False", 0, 0},  {"", 0, -1},    {"1", 1, -1},    {"true x", 0, -1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        ASSERT_TRUE(prefs.SetAttr("s", "k", row.value));
        EXPECT_STREQ(prefs.GetAttr("S", "K", nullptr), row.value);
        EXPECT_EQ(prefs.GetLongAttr("s", "k", 99), row.number);
        for (const bool byDefault : {false, true})
            EXPECT_EQ(prefs.GetBoolAttr("s", "k", byDefault), row.truth < 0 ? byDefault : row.truth == 1);
    }
    EXPECT_EQ(prefs.GetLongAttr("s", "none", 99), 99);
    EXPECT_TRUE(prefs.GetBoolAttr("none", "k", true));
    EXPECT_EQ(prefs.GetAttr("s", "", nullptr), nullptr);
    EXPECT_EQ(prefs.GetAttr(nullptr, "k", nullptr), nullptr);
}

TEST(PrefsValues, comeFromTheDefaultsAndRingsEnd)
{
    PrefsC a;
    PrefsC b;
    PrefsC c;
    b.SetAttr("s", "b", "1");
    c.SetAttr("s", "c", "0x10");
    c.SetAttr("s", "b", "2");
    a.SetDefaults(&b);
    b.SetDefaults(&c);
    EXPECT_STREQ(a.GetAttr("s", "b", ""), "1");
    EXPECT_EQ(a.GetLongAttr("s", "c", 0), 16);
    for (PrefsC* const last : {&a, &b, &c}) {
        c.SetDefaults(last);
        EXPECT_STREQ(a.GetAttr("s", "c", ""), "0x10");
        EXPECT_STREQ(a.GetAttr("s", "none", "default"), "default");
    }
    a.SetDefaults(&a);
    EXPECT_STREQ(a.GetAttr("s", "b", "default"), "default");
}

TEST(PrefsValues, areTrimmedAndMayBeTakenFromThemselves)
{
    PrefsC prefs;
    ASSERT_TRUE(prefs.SetAttr("s", "k", " \t\n a b \r\n\t "));
    EXPECT_STREQ(prefs.GetAttr("s", "k", ""), "\n a b");
    for (int i = 0; i < 12; ++i) {
        const std::string twice = std::string(prefs.GetAttr("s", "k", "")) + prefs.GetAttr("s", "k", "");
        ASSERT_TRUE(prefs.SetAttr("s", "k", twice.c_str()));
        ASSERT_EQ(prefs.GetAttr("s", "k", ""), twice);
    }
    const std::string tail = prefs.GetAttr("s", "k", "") + 4;
    ASSERT_TRUE(prefs.SetAttr("s", "k", prefs.GetAttr("s", "k", "") + 4));
    EXPECT_EQ(prefs.GetAttr("s", "k", ""), tail);
    ASSERT_TRUE(prefs.SetAttr("s", "k", nullptr));
    EXPECT_STREQ(prefs.GetAttr("s", "k", "none"), "");
}

TEST(PrefsStates, moveAsOperationsSay)
{
    PrefsC prefs;
    EXPECT_FALSE(prefs.AddSection(""));
    EXPECT_FALSE(prefs.AddSection(nullptr));
    EXPECT_TRUE(prefs.AddSection("new"));
    EXPECT_FALSE(prefs.AddSection("NEW"));
    EXPECT_EQ(prefs.FindSection("new")->ps_dirty, SEC_NEW);
    EXPECT_EQ(prefs.NewSection("Loaded", true)->ps_dirty, SEC_CLEAN);

    EXPECT_TRUE(prefs.SetAttr("loaded", "k", "1", false));
    PrefsKeyElem* const key = prefs.FindSection("loaded")->ps_sec_p->FindKey("K");
    EXPECT_EQ(key->ke_dirty, KEY_CLEAN);
    EXPECT_TRUE(prefs.SetAttr("loaded", "k", "2"));
    EXPECT_EQ(key->ke_dirty, KEY_CHANGE);
    EXPECT_TRUE(prefs.RemoveKey("loaded", "k"));
    EXPECT_FALSE(prefs.RemoveKey("loaded", "k"));
    EXPECT_EQ(key->ke_dirty, KEY_REMOVE);
    EXPECT_EQ(prefs.GetAttr("loaded", "k", nullptr), nullptr);
    EXPECT_FALSE(prefs.RemoveSection("loaded", true));   // removed keys count
    EXPECT_TRUE(prefs.SetAttr("loaded", "k", "3"));
    EXPECT_STREQ(prefs.GetAttr("loaded", "k", nullptr), "3");

    EXPECT_TRUE(prefs.RemoveSection("loaded"));
    EXPECT_EQ(prefs.FindSection("loaded"), nullptr);
    EXPECT_EQ(prefs.FindSection("loaded", true)->ps_sec_p->FindKey("k", true), key);
    EXPECT_FALSE(prefs.RemoveKey("loaded", "k"));
    EXPECT_EQ(contents(prefs), "[new]\n");
    EXPECT_TRUE(prefs.AddSection("loaded"));
    EXPECT_EQ(prefs.FindSection("loaded")->ps_dirty, SEC_CLEAN);
    EXPECT_EQ(contents(prefs), "[new]\n[Loaded]\n");
    EXPECT_FALSE(prefs.RemoveSection("none"));
}

TEST(PrefsLists, holdWhatIsNotRemovedInOrder)
{
    PrefsC prefs;
    EXPECT_EQ(prefs.GetKeys("s"), nullptr);
    EXPECT_EQ(prefs.GetKeyElems(nullptr), nullptr);
    EXPECT_EQ(*prefs.GetSectNames(), nullptr);
    std::string expected = "[s]\n";
    for (int i = 0; i < 100; ++i) {
        const std::string name = "key" + std::to_string(i);
        ASSERT_TRUE(prefs.SetAttr("s", name.c_str(), "v"));
        if (i % 3 != 0) expected += name + "=v\n";
        EXPECT_EQ(i % 3 == 0 && prefs.RemoveKey("s", name.c_str()), i % 3 == 0);
    }
    ASSERT_TRUE(prefs.SetAttrWithoutKey("s", "bare"));
    ASSERT_TRUE(prefs.SetAttrWithoutKey("s", "bare"));
    EXPECT_EQ(contents(prefs), expected + "=bare\n=bare\n");

    PrefsSectionC& section = *prefs.FindSection("s")->ps_sec_p;
    for (int round = 0; round < 2; ++round, section.ResetIterator()) {
        EXPECT_STREQ(section()->ke_name_p, "key0");
        EXPECT_STREQ(section()->ke_name_p, "key1");
    }
    const char** const names = prefs.GetKeys("s");
    prefs.Clear();
    EXPECT_STREQ(names[0], "key1");   // the names are the thread's own
    EXPECT_EQ(contents(prefs), "");
    inThreads(4, [&](int) { EXPECT_EQ(*PrefsC().GetSectNames(), nullptr); });
}

TEST(PrefsSave, overwritingWritesWhatIsThere)
{
    writeFile("over.ini", "; lost\n[s]\nk=1\nl=2\n[t]\n");
    PrefsC prefs;
    ASSERT_TRUE(prefs.Load("over.ini"));
    prefs.RemoveKey("s", "k");
    prefs.RemoveSection("t");
    prefs.SetAttr("u", "a", "1\r\n2\r3");
    prefs.SetAttrWithoutKey("u", "bare");
    EXPECT_TRUE(prefs.Save());
    EXPECT_EQ(fileText("over.ini"), "\n[s]\n\nl=2\n\n[u]\n\na=1\n2\n3\nbare\n");
    EXPECT_FALSE(prefs.Save("none/x.ini"));
    EXPECT_FALSE(PrefsC().Save());
    EXPECT_TRUE(PrefsC("own.ini").Save());
    EXPECT_EQ(fileText("own.ini"), "");
}
