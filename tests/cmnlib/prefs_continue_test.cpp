#include "prefs.h"

#include "cmnlib/prefsmerge.h"
#include "support/helpers.h"
#include "tests/cmnlib/prefssupport.h"

#include <gtest/gtest.h>

namespace {

PrefsSectionElem* section(PrefsC& prefs, const char* name) { return prefs.FindSection(name, true); }

}   // namespace

TEST(PrefsContinues, loadOfTheOwnNameIsRefused)
{
    writeFile("own.ini", "[s]\na=1\n");
    PrefsC prefs;
    ASSERT_TRUE(prefs.Load("own.ini"));
    EXPECT_FALSE(prefs.Load(ownName(prefs)));
    EXPECT_STREQ(prefs.GetAttr("s", "a", ""), "1");
    EXPECT_EQ(assertCount("filename_p != CurrentFileName_p"), 1u);
}

TEST(PrefsContinues, tamperedSectionsAreLeftOutOrMended)
{
    PrefsC prefs;
    prefs.SetAttr("a", "k", "1");
    prefs.SetAttr("b", "k", "2");
    section(prefs, "a")->ps_name_p = nullptr;
    EXPECT_NE(prefs.NewSection("a", false), nullptr);
    EXPECT_EQ(assertCount("current_p->ps_name_p != 0"), 1u);
    EXPECT_EQ(prefs.GetAttr("a", "k", nullptr), nullptr);

    PrefsSectionElem* const b = section(prefs, "b");
    b->ps_sec_p = nullptr;
    EXPECT_EQ(PrefsMergeC::merge(prefs, "[b]\nk=3\n"), "[b]\nk=3\n\n[a]\n\n");
    EXPECT_GE(assertCount("sec_elem_p->ps_sec_p != 0"), 1u);
    EXPECT_EQ(prefs.NewSection("b", false), b);
    EXPECT_EQ(assertCount("current_p->ps_sec_p != 0"), 1u);
    EXPECT_EQ(prefs.GetAttr("b", "k", "none"), std::string("none"));
}

TEST(PrefsContinues, linesOfUnknownStatesAreCopied)
{
    PrefsC prefs;
    prefs.SetAttr("s", "k", "1");
    prefs.NewSection("s", true);
    section(prefs, "s")->ps_sec_p->FindKey("k")->ke_dirty = static_cast<KeyStatusE>(7);
    EXPECT_EQ(PrefsMergeC::merge(prefs, "[s]\nk=3\n"), "[s]\nk=3\n");
    EXPECT_EQ(assertCount("!\"Invalid key state encounted when merging pref file.\""), 1u);
    section(prefs, "s")->ps_dirty = static_cast<SectionStatusE>(7);
    EXPECT_EQ(PrefsMergeC::merge(prefs, "[s]\nk=3\nx\n"), "[s]\nk=3\nx\n");
    EXPECT_EQ(assertCount("!\"Invalid section state encounted when merging pref file.\""), 2u);
}
