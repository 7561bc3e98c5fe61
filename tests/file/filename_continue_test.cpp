#include "filename.h"

#include "stringar.h"
#include "support/helpers.h"
#include "tests/file/filesupport.h"

#include <gtest/gtest.h>

#include <memory>

TEST(FileNameContinues, whatIsNotThereIsEmpty)
{
    const FileNameC name = named("a/b");
    const FileNameC* const none = nullptr;
    EXPECT_EQ(str(FileNameC(none, StringC("/a/"))), "/a");
    EXPECT_EQ(str(FileNameC().getComponent(0)), "");
    EXPECT_EQ(assertCount("!path.isEmpty()"), 1u);
    EXPECT_EQ(str(name.getComponent(2)), "");
    EXPECT_EQ(str(name.getComponent(-1)), "");
    EXPECT_EQ(assertCount("num == -1"), 2u);
    EXPECT_FALSE(name.isBaseDir(none));
    EXPECT_EQ(name.makeRelativeTo(none), nullptr);
    EXPECT_EQ(name.compareTo(none), 0);
    EXPECT_EQ(assertCount(), 7u);
}

TEST(FileNameContinues, componentsAreTakenFromWhereThereAreSome)
{
    const struct {
        const char* path;
        long first;
        long num;
        const char* parts;
        size_t asserts;
    } rows[] = {{"a/b", 7, 1, "b", 1}, {"a/b", -3, 1, "a", 1}, {"", 0, -1, "", 2}, {"a/b", 0, 0, nullptr, 1}};
    size_t asserts = 0;
    for (const auto& row : rows) {
        const std::unique_ptr<StringArrayC> parts(named(row.path).getComponents(row.first, row.num));
        EXPECT_EQ(assertCount(), asserts += row.asserts) << row.path;
        ASSERT_EQ(parts == nullptr, row.parts == nullptr);
        if (parts == nullptr) continue;
        EXPECT_EQ(parts->size() == 0 ? "" : str((*parts)[0]), row.parts);
    }
}

TEST(FileNameContinues, relativeToABaseOfTheOtherKindGoesByTheBarePaths)
{
    const FileNameC base = named("/a");
    EXPECT_EQ(str(*std::unique_ptr<FileNameC>(named("a/b").makeRelativeTo(&base))), "b");
    EXPECT_EQ(str(*std::unique_ptr<FileNameC>(named("c").makeRelativeTo(&base))), "c");
    EXPECT_EQ(assertCount("base->isAbsolute() == is_absolute"), 2u);
}
