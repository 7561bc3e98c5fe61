#include "error/api/selectstyle.h"

#include <gtest/gtest.h>
#include <string>

namespace {

struct StyleRowT {
    const char* name;
    std::string_view text;
    ErrSevT sev;
    std::string_view message;
};

const StyleRowT STYLE_ROWS[] = {
    {"nothing", "", ERR_SEV_ERROR, ""},
    {"plain", "a {w} b", ERR_SEV_ERROR, "a {w} b"},
    {"mark and a blank", "{w} low", ERR_SEV_WARN, "low"},
    {"only one blank goes", "{i}\t low", ERR_SEV_INFO, " low"},
    {"not recorded", "{#}x", ERR_SEV_NONE, "x"},
    {"monitor, fatal: the last letter counts", "{mf}x", ERR_SEV_FATAL, "x"},
    {"no letter", "{}x", ERR_SEV_ERROR, "x"},
    {"letters that say nothing", "{w?z}x", ERR_SEV_WARN, "x"},
    {"a capital takes the next letter out", "{Ew}x", ERR_SEV_ERROR, "x"},
    {"but not the one after that", "{Ewi}x", ERR_SEV_INFO, "x"},
    {"two capitals", "{wXYi}x", ERR_SEV_WARN, "x"},
    {"any other character ends the condition", "{E w}x", ERR_SEV_WARN, "x"},
    {"mark without end", "{w low", ERR_SEV_WARN, ""},
    {"nothing behind the mark", "{w}", ERR_SEV_WARN, ""},
    {"the first brace ends the mark", "{w}}x", ERR_SEV_WARN, "}x"},
    {"one variant", "\1\1{e}\1P\1R\1S", ERR_SEV_ERROR, "P\1R\1S"},
    {"variant without reason and solution", "\1\1{w}\1P\1\1", ERR_SEV_WARN, "P\1\1"},
    {"blank behind a variant's mark", "\1\1{f} \1P\1R\1S", ERR_SEV_FATAL, "P\1R\1S"},
    {"variant without a mark", "\1\1w\1P\1R\1S", ERR_SEV_ERROR, "P\1R\1S"},
    {"the last one for everybody", "\1\1{i}\1A\1\1\1\1{w}\1B\1\1\1web\1{f}\1C\1\1", ERR_SEV_WARN, "B\1\1"},
    {"none for everybody", "\1web\1{f}\1C\1\1", ERR_SEV_ERROR, ""},
    {"incomplete variant", "\1\1{f}\1P\1R", ERR_SEV_FATAL, "P\1R\1"},
    {"incomplete second variant", "\1\1{i}\1P\1R\1S\1\1{f}\1Q", ERR_SEV_FATAL, "Q\1\1"},
    {"separator behind the last field", "\1\1{i}\1P\1R\1S\1", ERR_SEV_INFO, "P\1R\1S"},
    {"only a separator", "\1", ERR_SEV_ERROR, ""},
};

TEST(SelectStyle, readsMarksAndVariants)
{
    for (const StyleRowT& row : STYLE_ROWS) {
        SCOPED_TRACE(row.name);
        ErrSevT sev = ERR_SEV_MONITOR;
        std::string room;
        EXPECT_EQ(selectStyle(row.text, sev, room), row.message);
        EXPECT_EQ(sev, row.sev);
    }
}

TEST(SelectStyleDeathTest, listOfVariantsMustNotHoldAZeroByte)
{
    ErrSevT sev;
    std::string room;
    EXPECT_EXIT(selectStyle({"\1\1{w}\1P\1R\1S\0", 12}, sev, room), testing::ExitedWithCode(1),
                "buf\\[-1] == .* failed file catalog.cpp line ");
}

}   // namespace
