#include "support/helpers.h"
#include "tvxcmn.h"

#include <gtest/gtest.h>

TEST(ConfigurationContinues, withoutAConfigurationForOtherVersions)
{
    for (const int version : {-1, 0, 3}) EXPECT_EQ(getConfiguration(version), nullptr) << version;
    EXPECT_EQ(assertCount("(version >= 1) && (version <= 2)"), 3u);
}
