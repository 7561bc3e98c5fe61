#include "errcatalog.h"
#include "error/catalogfiles.h"
#include "localei.h"
#include "support/helpers.h"
#include "tvxcmn.h"

#include <cerrno>
#include <clocale>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

const ErrorT DISK = 0xE1B20005L;

// Gives the process its locale back.
class LocaleTest : public testing::Test {
protected:
    ~LocaleTest() override { std::setlocale(LC_ALL, "C"); }
};

// The message of the locale's catalog, behind its severity.
std::string message(ErrorT err, const char* def_str = "default")
{
    LocaleIdT name;
    ErrSevT sev = ERR_SEV_NONE;
    const StringC text = getLocale(name)->language(1)->catalog()->getMessage(sev, err, def_str, nullptr);
    return std::to_string(sev) + text.utf8();
}

TEST_F(LocaleTest, isTheOneThatTheProcessHas)
{
    LocaleIdT name("nonsense");
    LocaleI* const c = getLocale(name);
    EXPECT_STREQ(name.utf8(), "C");
    name = "other";
    EXPECT_EQ(getLocale(name), c);

    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
    LocaleI* const utf8 = getLocale(name);
    EXPECT_STREQ(name.utf8(), "C.UTF-8");
    EXPECT_NE(utf8, c);
    ASSERT_NE(std::setlocale(LC_CTYPE, "C"), nullptr);   // several names in one
    LocaleI* const mixed = getLocale(name);
    EXPECT_STREQ(name.utf8(), std::setlocale(LC_ALL, nullptr));
    EXPECT_TRUE(mixed != c && mixed != utf8);

    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(getLocale(name), c);
    EXPECT_NE(c->region(1), utf8->region(1));
}

TEST_F(LocaleTest, hasFacetsWithoutRegionalData)
{
    LocaleIdT name;
    LocaleI& locale = *getLocale(name);
    EXPECT_EQ(locale.region(1), locale.region(2));
    LocaleRegionI& region = *locale.region(1);
    region.overrideUILocale(1033);
    EXPECT_EQ(region.platformLocaleID(), 0UL);
    const LocaleCalendarI& calendar = *locale.calendar(1);
    EXPECT_EQ(calendar.type(), LocaleCalendarGregorian);
    EXPECT_EQ(calendar.longDateSeq(), LocaleCalendarMDY);
    for (const StringC& text :
         {region.lang3(), region.lang2(), region.country(), locale.numbers(1)->decimal(), locale.currency(2)->symbol(),
          calendar.dayName(-1), calendar.dayName(6), calendar.dayName(7), calendar.monthNameGen(12),
          calendar.monthNameGen(13), calendar.timeSep()}) {
        EXPECT_TRUE(text.isEmpty());
    }
    EXPECT_EQ(locale.language(2)->region(), nullptr);
}

TEST_F(LocaleTest, languageIsTheProcessesCatalog)
{
    writeFile("some.cat",
              catalogBytes({{0, ENOENT, "{w} not there"}, {0x1B2, 5, "{i} from the file"}, {0x1B2, 6, ""}}));
    LocaleIdT name;
    LocaleLanguageI& language = *getLocale(name)->language(1);
    ErrCatalogI* const catalog = language.catalog();
    EXPECT_EQ(message(DISK), "4");
    EXPECT_EQ(message(ErrorOfErrno(ENOENT)), std::string("4") + std::strerror(ENOENT));

    catalog->setUserLevel("A");
    EXPECT_EQ(language.catalog("some.cat"), 0);
    EXPECT_EQ(language.catalog(), catalog);
    EXPECT_EQ(message(DISK), "2from the file");
    EXPECT_EQ(message(DISK + 1), "4");
    EXPECT_EQ(message(DISK + 2), "4");
    EXPECT_EQ(message(ErrorOfErrno(ENOENT)), "3not there");
    EXPECT_EQ(message(ErrorOfErrno(EACCES)), std::string("4") + std::strerror(EACCES));
    EXPECT_EQ(message(DISK & ~(1L << 29)), "4");

    std::setlocale(LC_ALL, "C.UTF-8");
    EXPECT_EQ(message(DISK), "4");   // another locale, another catalog
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(message(DISK), "2from the file");
    EXPECT_EQ(language.catalog("missing.cat"), 0);
    EXPECT_EQ(message(DISK), "4");
}

struct PatternRowT {
    const char* pattern;
    std::vector<const char*> files;   // in the order in which they are looked for
};

const PatternRowT PATTERN_ROWS[] = {
    {"allcat.%L.cat", {"allcat.-.cat", "allcat..cat", "allcat.cat"}},
    {"lib/allcat.%L.cat", {"lib/allcat.-.cat", "lib/allcat..cat", "lib/allcat.cat"}},
    {"lib/%L/allcat.cat", {"lib/-/allcat.cat", "lib/allcat.cat"}},
    {"lib/%L.cat", {"lib/-.cat", "lib/.cat"}},
    {"%L/x.cat", {"-/x.cat", "./x.cat"}},
    {"x%L", {"x-", "x"}},
    {"a%Lb%L", {"a-b%L", "ab%L"}},
    {"plain.cat", {"plain.cat"}},
};

TEST_F(LocaleTest, catalogsOfALanguageAreLookedForInOrder)
{
    LocaleIdT name;
    LocaleLanguageI& language = *getLocale(name)->language(1);
    for (const PatternRowT& row : PATTERN_ROWS) {
        std::filesystem::create_directories("lib/-");
        std::filesystem::create_directories("-");
        for (const char* const file : row.files) writeFile(file, catalogBytes({{0x1B2, 5, file}}));
        for (const char* const file : row.files) {
            language.catalog(row.pattern);
            EXPECT_EQ(message(DISK), std::string("4") + file) << row.pattern;
            std::filesystem::remove(file);
        }
        language.catalog(row.pattern);
        EXPECT_EQ(message(DISK), "4") << row.pattern;
    }
}

TEST_F(LocaleTest, threadsMeetInOneLocale)
{
    std::setlocale(LC_ALL, "POSIX");
    writeFile("some.cat", catalogBytes({{0x1B2, 5, "text"}}));
    LocaleI* locales[16] = {};
    LocaleLanguageI* languages[16] = {};
    inThreads(16, [&](int thread) {
        LocaleIdT name;
        locales[thread] = getLocale(name);
        languages[thread] = locales[thread]->language(1);
        for (int i = 0; i < 100; ++i) {
            languages[thread]->catalog("some.cat");
            languages[thread]->catalog()->setUserLevel("A");
            EXPECT_EQ(message(DISK), "4text");
        }
    });
    for (int thread = 1; thread < 16; ++thread) {
        EXPECT_EQ(locales[thread], locales[0]);
        EXPECT_EQ(languages[thread], languages[0]);
    }
}

TEST_F(LocaleTest, facetsOfAnUnknownVersionEndTheProcess)
{
    LocaleIdT name;
    LocaleI* const locale = getLocale(name);
    EXPECT_EXIT((void)locale->numbers(3), testing::ExitedWithCode(1), "\\(version >= 1\\) && \\(version <= 2\\)");
}

}   // namespace
