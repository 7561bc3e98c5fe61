#include "file/filesupport.h"
#include "filelister.h"
#include "support/helpers.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>

namespace {

// Answers with what no sink may say.
class ConfusedSinkC : public FileListSinkI {
public:
    ActionT addFile(FileNameC* name) override
    {
        delete name;
        return static_cast<ActionT>(9);
    }
    ActionT addDir(FileNameC* name) override { return addFile(name); }
    ActionT warning(FileNameC*, int) override { return static_cast<ActionT>(9); }
};

}   // namespace

TEST(FileListerContinue, unknownActionsOnlyEndTheStep)
{
    std::filesystem::create_directory("dir");
    std::ofstream("dir/a") << "x";
    std::ofstream("dir/b") << "x";
    ConfusedSinkC sink;
    const FileNameC dir = named("dir");
    FileListerC lister(&dir, 0);
    EXPECT_EQ(lister.listAll(&sink), 0);
    EXPECT_EQ(assertCount("Invalid return from FileListSinkI::addFile/Dir()"), 2U);

    const FileNameC missing = named("missing");
    FileListerC nowhere(&missing, 0);
    EXPECT_EQ(nowhere.getNext(&sink), 0);
    EXPECT_EQ(assertCount("Invalid return code from FileListSinkI::warning()"), 1U);
    EXPECT_EQ(nowhere.getNext(&sink), ENOENT);
}

TEST(FileListerContinue, noDirectoryIsOneThatDoesNotExist)
{
    FileListerC lister(nullptr, FileListerC::Recursive);
    EXPECT_EQ(assertCount("filename != 0"), 1U);
    FileNameC* name = nullptr;
    EXPECT_EQ(lister.getNext(&name), 0);
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(lister.getNext(&name), ENOENT);
    FileListerC relative(nullptr, FileListerC::Relative);   // not the current directory
    EXPECT_EQ(relative.getNext(&name), 0);
    EXPECT_EQ(relative.getNext(&name), ENOENT);
    EXPECT_EQ(DIRStackC().pop().dp, nullptr);
    EXPECT_EQ(assertCount("n < used"), 1U);
}
