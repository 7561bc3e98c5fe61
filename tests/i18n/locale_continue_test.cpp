#include "localei.h"
#include "support/helpers.h"
#include "tvxcmn.h"

#include <gtest/gtest.h>

namespace {

TEST(LocaleContinues, facetsOfAnUnknownVersionAreNull)
{
    LocaleIdT name;
    LocaleI& locale = *getLocale(name);
    EXPECT_EQ(locale.language(0), nullptr);
    EXPECT_EQ(locale.calendar(3), nullptr);
    EXPECT_EQ(locale.region(-1), nullptr);
    EXPECT_EQ(assertCount("(version >= 1) && (version <= 2)"), 3U);
    EXPECT_NE(locale.language(1), nullptr);
}

}   // namespace
