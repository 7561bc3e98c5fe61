#include "filelister.h"

#include "cmnlib/syscall.h"
#include "file/filesupport.h"
#include "support/faults.h"
#include "support/helpers.h"
#include "support/system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
typedef FileListerC FL;

namespace {

void put(const std::string& path, size_t size = 1) { std::ofstream(path) << std::string(size, 'x'); }

// Every path that a lister hands out.
std::vector<std::string> walked(FileListerI& lister)
{
    std::vector<std::string> paths;
    for (FileNameC* name = nullptr; lister.getNext(&name) == 0;) {
        const std::unique_ptr<FileNameC> owner(name);
        if (name != nullptr) paths.push_back(str(*name));
    }
    return paths;
}

std::vector<std::string> walked(const std::string& dir, unsigned flags)
{
    const FileNameC name = named(dir);
    FileListerC lister(&name, flags);
    return walked(lister);
}

std::vector<std::string> sorted(std::vector<std::string> texts)
{
    std::sort(texts.begin(), texts.end());
    return texts;
}

// Notes what it gets, and answers as it is told.
class NotesC : public FileListSinkI {
public:
    explicit NotesC(std::function<ActionT(const std::string&)> answers = [](const auto&) { return Continue; })
        : m_answers(std::move(answers))
    {
    }
    ActionT addFile(FileNameC* name) override { return note("file ", std::unique_ptr<FileNameC>(name)); }
    ActionT addDir(FileNameC* name) override { return note("dir ", std::unique_ptr<FileNameC>(name)); }
    ActionT warning(FileNameC* name, int error) override
    {
        return note(std::to_string(error) + " ", std::make_unique<FileNameC>(*name));
    }
    std::vector<std::string> notes;

private:
    ActionT note(const std::string& what, const std::unique_ptr<FileNameC>& name)
    {
        notes.push_back(what + str(*name));
        return m_answers(notes.back());
    }
    const std::function<ActionT(const std::string&)> m_answers;
};

// A tree of some 300 entries from a fixed seed, with links in it.
void makeTree(const std::string& root, TextSourceC& source, int depth = 0)
{
    fs::create_directory(root);
    for (uint32_t n = 0, count = 3 + source.below(5); n < count; ++n) {
        const std::string path = root + "/" + std::to_string(n);
        const uint32_t kind = source.below(8);
        if (kind < 4 && depth < 4) {
            makeTree(path, source, depth + 1);
        } else if (kind == 4) {
            fs::create_symlink("..", path);
        } else {
            put(path, source.below(100));
        }
    }
}

}   // namespace

TEST(FileLister, findsWhatARecursiveIteratorFinds)
{
    TextSourceC source(20);
    makeTree("tree", source);
    std::vector<std::string> expected;
    for (const auto& entry : fs::recursive_directory_iterator("tree")) expected.push_back(entry.path());
    EXPECT_EQ(sorted(walked("tree", FL::Recursive)), sorted(expected));

    for (std::string& path : expected) path.erase(0, 5);
    EXPECT_EQ(sorted(walked("tree", FL::Recursive | FL::Relative)), sorted(expected));

    std::vector<std::string> flat;
    for (const auto& entry : fs::directory_iterator("tree")) flat.push_back(entry.path());
    EXPECT_EQ(walked("tree", 0), flat);   // in the system's own order
}

TEST(FileLister, informationIsThatOfTheEntry)
{
    fs::create_directories("tree/dir");
    put("tree/file", 123);
    fs::create_symlink("dir", "tree/link");
    const FileNameC tree = named("tree");
    for (const unsigned flags : {0U, 0U | FL::FollowLinks}) {
        FileListerC lister(&tree, flags);
        FileNameC* name = nullptr;
        FileInfoC* info = nullptr;
        while (lister.getNext(&name, &info) == 0) {
            const std::unique_ptr<FileNameC> nameOwner(name);
            const std::unique_ptr<FileInfoC> infoOwner(info);
            const std::string path = str(*name);
            const bool isDir = path == "tree/dir" || (path == "tree/link" && flags != 0);
            EXPECT_EQ(info->isDirectory(), isDir) << path;
            if (path == "tree/file") {
                EXPECT_EQ(info->size(), 123);
            }
        }
    }
}

TEST(FileLister, dotDotIsListedButNeverEntered)
{
    fs::create_directories("top/tree/dir");
    put("top/outside");
    NotesC sink;
    const FileNameC tree = named("top/tree");
    EXPECT_EQ(FL(&tree, FL::Recursive | FL::IncludeDotDot).listAll(&sink), 0);
    EXPECT_THAT(sink.notes, UnorderedElementsAre("dir top/tree/..", "dir top/tree/dir", "dir top/tree/dir/.."));
    EXPECT_EQ(walked("top/tree", FL::Recursive | FL::IncludeDotDot).size(), 3U);
}

TEST(FileLister, filtersDecideAboutFilesOnly)
{
    fs::create_directories("tree/a.txt/deep");
    put("tree/a.txt/deep/b.txt");
    put("tree/a.txt/deep/b.TXT");
    put("tree/c.txt");
    const FileNameC tree = named("tree");
    FileWildcardListerC wild(&tree, "*.txt", FL::Recursive);
    NotesC sink;
    EXPECT_EQ(wild.listAll(&sink), 0);
    EXPECT_THAT(sink.notes, UnorderedElementsAre("file tree/a.txt/deep/b.txt", "file tree/c.txt"));
    FileWildcardListerC plain(&tree, "*.txt", FL::Recursive);   // without a sink: all directories too
    EXPECT_THAT(walked(plain),
                UnorderedElementsAre("tree/a.txt", "tree/a.txt/deep", "tree/a.txt/deep/b.txt", "tree/c.txt"));

    StringArrayC endings;
    endings << "deep/b.txt"
            << "nothing";
    FileFindListerC ends(&tree, FL::Recursive | FL::Relative);
    ends.setFiles(&endings);
    NotesC found;
    EXPECT_EQ(ends.listAll(&found), 0);
    EXPECT_THAT(found.notes, ElementsAre("file a.txt/deep/b.txt"));
    FileFindListerC none(&tree, FL::Recursive);
    none.setFiles(nullptr);
    EXPECT_EQ(none.listAll(&found), 0);
    EXPECT_EQ(found.notes.size(), 1U);
}

TEST(FileLister, theSinkSaysHowToGoOn)
{
    fs::create_directories("tree/dir");
    for (const char* const path : {"tree/dir/1", "tree/dir/2", "tree/dir/3", "tree/z"}) put(path);
    const FileNameC tree = named("tree");
    const auto countWith = [&](FileListSinkI::ActionT forDir, FileListSinkI::ActionT forInner) {
        NotesC sink([=](const std::string& note) {
            if (note == "dir tree/dir") return forDir;
            return note.starts_with("file tree/dir/") ? forInner : FileListSinkI::Continue;
        });
        EXPECT_EQ(FL(&tree, FL::Recursive).listAll(&sink), 0);
        return sink.notes;
    };
    EXPECT_EQ(countWith(NotesC::Continue, NotesC::Continue).size(), 5U);
    EXPECT_EQ(countWith(NotesC::Continue, NotesC::Prune).size(), 5U);
    EXPECT_EQ(countWith(NotesC::Continue, NotesC::Ascend).size(), 3U);
    EXPECT_THAT(countWith(NotesC::Prune, NotesC::Continue), UnorderedElementsAre("dir tree/dir", "file tree/z"));
    EXPECT_EQ(countWith(NotesC::Abort, NotesC::Continue).back(), "dir tree/dir");
    const std::vector<std::string> aborted = countWith(NotesC::Continue, NotesC::Abort);
    EXPECT_TRUE(aborted.back().starts_with("file tree/dir/"));
}

TEST(FileLister, anEmptyOrMissingStartEndsAtOnce)
{
    fs::create_directory("empty");
    const FileNameC empty = named("empty");
    FileListerC lister(&empty, FL::Recursive);
    FileNameC* name = nullptr;
    EXPECT_EQ(lister.getNext(&name), TVXERR_FILE_NO_MORE_FILES);

    const FileNameC missing = named("missing");
    FileListerC nowhere(&missing, 0);
    EXPECT_EQ(nowhere.getNext(&name), 0);
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(nowhere.getNext(&name), ENOENT);
    EXPECT_EQ(nowhere.getNext(&name), ENOENT);
    nowhere.clearError();
    EXPECT_EQ(nowhere.getNext(&name), TVXERR_FILE_NO_MORE_FILES);

    NotesC aborting([](const std::string&) { return NotesC::Abort; });
    FileListerC again(&missing, 0);
    EXPECT_EQ(again.listAll(&aborting), ENOENT);
    EXPECT_EQ(again.getNext(&aborting), ENOENT);
    EXPECT_THAT(aborting.notes, ElementsAre("2 missing"));
    EXPECT_THAT(recordedErrors(), IsEmpty());
}

TEST(FileLister, cancelAndAscendGoOnFromOutside)
{
    fs::create_directories("tree/dir");
    put("tree/dir/inner");
    const FileNameC tree = named("tree");
    FileListerC lister(&tree, FL::Recursive);
    FileNameC* name = nullptr;
    ASSERT_EQ(lister.getNext(&name), 0);
    delete name;
    lister.ascend();
    EXPECT_EQ(lister.getNext(&name), TVXERR_FILE_NO_MORE_FILES);

    fs::create_directories("tree/dir/below");   // which is not entered any more when the sink has left "dir"
    FileListerC left(&tree, FL::Recursive);
    NotesC sink([&](const std::string& note) {
        if (note == "dir tree/dir/below") left.ascend();
        return FileListSinkI::Continue;
    });
    EXPECT_EQ(left.listAll(&sink), 0);
    EXPECT_EQ(sink.notes.back(), "dir tree/dir/below");

    const size_t before = openDescriptors();
    FileListerC other(&tree, FL::Recursive);
    ASSERT_EQ(other.getNext(&name), 0);
    delete name;
    other.cancel();
    EXPECT_EQ(other.getNext(&name), TVXERR_FILE_NO_MORE_FILES);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(FileLister, linksBackAreFoundOut)
{
    fs::create_directories("tree/a");
    fs::create_directories("tree/b");
    put("tree/a/file");
    fs::create_symlink("../b", "tree/a/to-b");
    fs::create_symlink("../a", "tree/b/to-a");
    fs::create_symlink(".", "tree/self");
    const FileNameC tree = named("tree");
    NotesC sink;
    EXPECT_EQ(FL(&tree, FL::Recursive | FL::FollowLinks).listAll(&sink), 0);
    const std::string loop = std::to_string(ELOOP) + " ";
    EXPECT_EQ(std::count(sink.notes.begin(), sink.notes.end(), loop + "tree/self"), 1);
    EXPECT_EQ(std::count(sink.notes.begin(), sink.notes.end(), loop + "tree/a/to-b/to-a"), 1);
    EXPECT_LT(sink.notes.size(), 20U);
}

// The way back out of a directory that is deeper than there may be open ones is no longer the one in.
TEST(FileLister, linksToDeepTreesLoseNothing)
{
    std::string deep = "deep";
    for (int n = 0; n < 70; ++n) deep += "/d";
    fs::create_directories(deep);
    fs::create_directories("tree/inner");
    fs::create_directory_symlink("../../deep", "tree/inner/link");
    for (int n = 0; n < 20; ++n) {
        put("tree/" + std::to_string(n));
        put("tree/inner/" + std::to_string(n));
    }
    std::vector<std::string> expected;
    for (const auto& entry :
         fs::recursive_directory_iterator("tree", fs::directory_options::follow_directory_symlink)) {
        expected.push_back(entry.path());
    }
    EXPECT_EQ(sorted(walked("tree", FL::Recursive | FL::FollowLinks)), sorted(expected));
}

TEST(FileLister, namesNeedNotBeText)
{
    fs::create_directory("tree");
    put("tree/\xFF\xFE");
    put("tree/\xE9t\xE9");
    EXPECT_THAT(walked("tree", 0), UnorderedElementsAre("tree/\xFF\xFE", "tree/\xE9t\xE9"));
    const FileNameC tree = named("tree");
    FileWildcardListerC lister(&tree, "?t?", 0);
    EXPECT_THAT(walked(lister), ElementsAre("tree/\xE9t\xE9"));
}

// Deeper than there are descriptors and than a path can be, with something behind every directory.
TEST(FileLister, depthIsNotLimited)
{
    const int LEVELS = 2200;
    EXPECT_EQ(inChild([] {
                  FdOwnerC at(openFd(".", O_RDONLY | O_DIRECTORY));
                  for (int n = 0; n < LEVELS; ++n) {
                      if (::mkdirat(at.fd(), "d", 0777) != 0 || ::mkdirat(at.fd(), "e", 0777) != 0) return 1;
                      at.reset(::openat(at.fd(), "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
                  }
                  at.reset();
                  const rlimit few = {40, 40};
                  ::setrlimit(RLIMIT_NOFILE, &few);
                  const FileNameC here = named(".");
                  FileListerC lister(&here, FL::Recursive);
                  const std::vector<std::string> paths = walked(lister);
                  const std::set<std::string> different(paths.begin(), paths.end());
                  const long ends =
                      std::count_if(paths.begin(), paths.end(), [](const auto& path) { return path.ends_with("e"); });
                  return ends == LEVELS && different.size() == 2U * LEVELS ? 0 : 2;
              }),
              0);
}

TEST(FileLister, aFailureOfReadingIsNotTheEnd)
{
    fs::create_directories("tree/dir");
    put("tree/dir/file");
    const FileNameC tree = named("tree");
    {
        const FaultC fault("readdir", EIO, 3);
        NotesC sink;
        FileListerC lister(&tree, FL::Recursive);
        EXPECT_EQ(lister.listAll(&sink), 0);
        EXPECT_EQ(std::count_if(sink.notes.begin(), sink.notes.end(),
                                [](const auto& note) { return note.starts_with("5 tree"); }),
                  1);
    }
    const FaultC fault("openat", EMFILE, 1);
    FileListingC listing(new FileListerC(&tree, FL::Recursive));
    EXPECT_EQ(listing.errorCode(), EMFILE);
    EXPECT_EQ(listing.size(), 1U);
}

TEST(FileListing, readsAtOnceOrAsItIsAsked)
{
    fs::create_directory("tree");
    for (int n = 0; n < 10; ++n) put("tree/" + std::to_string(n));
    const FileNameC tree = named("tree");
    FileListingC all(new FileListerC(&tree, 0));
    EXPECT_EQ(all.size(), 10U);
    EXPECT_EQ(all.errorCode(), 0);
    EXPECT_FALSE(all.advance());

    FileListingC some(new FileListerC(&tree, 0), false);
    EXPECT_EQ(some.size(), 0U);
    EXPECT_TRUE(some.advance(4));
    EXPECT_EQ(some.size(), 4U);
    EXPECT_FALSE(some.advance());
    EXPECT_EQ(some.size(), 10U);
}
