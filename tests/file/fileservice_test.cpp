#include "fileservice.h"

#include "cmnlib/syscall.h"
#include "file/filesupport.h"
#include "filelister.h"
#include "streamreader.h"
#include "support/allocations.h"
#include "support/faults.h"
#include "support/helpers.h"
#include "support/system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <thread>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

void put(const std::string& path, const std::string& text = "x") { std::ofstream(path) << text; }

mode_t modeOf(const char* path)
{
    struct stat info = {};
    ::lstat(path, &info);
    return info.st_mode & 07777;
}

ErrorT system(int error) { return ErrorOfErrno(error); }

bool removed(const std::string& path, bool force, bool recursive)
{
    const FileNameC name = named(path);
    return FileService()->remove(&name, force, recursive) != 0;
}

bool made(const std::string& path, bool recursive)
{
    const FileNameC name = named(path);
    return FileService()->mkdir(&name, recursive) != 0;
}

long copied(const std::string& from, const std::string& to, FileCopyCallbackT callback = nullptr,
            void* closure = nullptr)
{
    const FileNameC source = named(from);
    const FileNameC target = named(to);
    return FileService()->copy(&source, &target, callback, closure);
}

long renamed(const std::string& from, const std::string& to)
{
    const FileNameC source = named(from);
    const FileNameC target = named(to);
    return FileService()->rename(&source, &target);
}

// What `find` says about a tree: kinds, permissions, sizes of files, targets of links.
std::string described(const std::string& tree)
{
    std::vector<std::string> lines =
        splitText(programOutput({"find", tree, "-type", "d", "-printf", "%P d %m\n", "-o", "-type", "l", "-printf",
                                 "%P -> %l\n", "-o", "-printf", "%P %y %s\n"}),
                  '\n');
    std::sort(lines.begin(), lines.end());
    std::string all;
    for (const std::string& line : lines) all += line + "\n";
    return all;
}

// Deeper than any path may be long, with a link to everything on each level.
void makeDeepTree(int levels)
{
    FdOwnerC at(openFd(".", O_RDONLY | O_DIRECTORY));
    for (int n = 0; n < levels; ++n) {
        if (::mkdirat(at.fd(), "d", 0777) != 0 || ::symlinkat("/", at.fd(), "z") != 0) std::abort();
        at.reset(::openat(at.fd(), "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
}

}   // namespace

TEST(FileService, copiesATreeAsItIs)
{
    fs::create_directories("tree/inner/closed");
    put("tree/file", std::string(10000, 'f'));
    put("tree/inner/closed/deep", "deep");
    put("tree/\xFF name");
    fs::create_directory_symlink("inner", "tree/to-dir");
    fs::create_symlink("nowhere", "tree/dangling");
    ASSERT_EQ(::chmod("tree/inner/closed", 0555), 0);
    const std::string expected = described("tree");

    fs::create_symlink("file", "tree/to-file");
    ASSERT_EQ(::mkfifo("tree/fifo", 0600), 0);
    EXPECT_EQ(copied("tree", "copy"), 0);
    EXPECT_EQ(fs::file_size("copy/to-file"), 10000U);
    EXPECT_FALSE(fs::is_symlink("copy/to-file") || fs::exists("copy/fifo"));
    fs::remove("copy/to-file");
    EXPECT_EQ(described("copy"), expected);
    EXPECT_THAT(recordedErrors(), IsEmpty());

    put("copy/file", "old");
    fs::remove("copy/to-dir");
    fs::remove("copy/dangling");
    EXPECT_EQ(copied("tree", "copy"), 0);   // into what is there
    EXPECT_EQ(fs::file_size("copy/file"), 10000U);
}

// Owners that cannot be given away are no reason to lose permissions, and what may not be seen is told.
TEST(FileService, copiesWhatBelongsToOthers)
{
    if (::geteuid() != 0) GTEST_SKIP() << "needs files of another owner";
    fs::create_directories("tree/inner");
    put("tree/inner/file");
    ASSERT_EQ(::chmod("tree/inner", 02755), 0);   // that of the group does not go along
    fs::create_symlink("file", "tree/inner/link");
    ASSERT_EQ(::chmod(".", 0777), 0);
    EXPECT_EQ(inChild([] {
                  if (::setuid(65534) != 0) return 1;
                  for (int time = 0; time < 2; ++time) {   // the second time onto the first copy
                      if (copied("tree", "copy") != 0 || !fs::exists("copy/inner/link")) return 2;
                  }
                  if (modeOf("copy") != 0755 || modeOf("copy/inner") != 0755) return 3;
                  fs::create_directories("own/closed");
                  put("own/closed/file");
                  ::chmod("own/closed", 0444);
                  return copied("own", "half") == system(EACCES) ? 0 : 4;
              }),
              0);
    const FileNameC root = named("/");
    const FileNameC tree = named("tree");
    const mode_t before = modeOf("/");
    EXPECT_EQ(FlnFileServiceC().mkdirTemplate(&tree, &root), TVXERR_FILE_CREATE_DIRECTORY);
    EXPECT_EQ(modeOf("/"), before);
    recordedErrors();
}

TEST(FileService, aTreeIsNotCopiedIntoItself)
{
    fs::create_directories("tree/sub");
    fs::create_directory_symlink("tree/sub", "link");
    for (const char* const to : {"tree", "tree/sub/new/deeper", "link/new"}) {
        EXPECT_EQ(copied("tree", to), TVXERR_FILE_CREATE_DIRECTORY) << to;
        EXPECT_THAT(recordedErrors(), ElementsAre(system(EINVAL), TVXERR_FILE_CREATE_DIRECTORY));
    }
    EXPECT_FALSE(fs::exists("tree/sub/new"));
    EXPECT_EQ(copied("tree", "tree2"), 0);
    fs::remove("tree2/sub");
    fs::create_directory_symlink("../tree/sub", "tree2/sub");   // a way back in
    put("tree/sub/file");
    EXPECT_EQ(copied("tree", "tree2"), TVXERR_FILE_CREATE_DIRECTORY);
    EXPECT_THAT(recordedErrors(), ElementsAre(system(EINVAL), TVXERR_FILE_CREATE_DIRECTORY));
}

TEST(FileService, callbacksSeeEveryBlockAndMayStop)
{
    struct SeenT {
        std::vector<FileSizeT> numbers;
        BooleanT answer;
    };
    const auto see = [](const FileNameC*, const FileNameC*, FileSizeT package, long files, FileSizeT length,
                        FileSizeT done, void* closure) -> BooleanT {
        SeenT* const seen = static_cast<SeenT*>(closure);
        seen->numbers.insert(seen->numbers.end(), {package, files, length, done});
        return seen->answer;
    };
    put("file", std::string(5000, 'x'));
    SeenT all = {{}, 1};
    EXPECT_EQ(copied("file", "copy", see, &all), 0);
    EXPECT_THAT(all.numbers, ElementsAre(5000, 1, 5000, 4096, 5000, 1, 5000, 5000));
    EXPECT_EQ(fs::file_size("copy"), 5000U);

    SeenT first = {{}, 0};
    EXPECT_EQ(copied("file", "copy", see, &first), 0);
    EXPECT_EQ(fs::file_size("copy"), 4096U);

    fs::create_directory("tree");
    put("tree/a", "12345");
    put("tree/b", "123");
    SeenT tree = {{}, 1};
    EXPECT_EQ(copied("tree", "copied", see, &tree), 0);
    ASSERT_EQ(tree.numbers.size(), 8U);
    EXPECT_EQ(tree.numbers[0], 8);
    EXPECT_EQ(tree.numbers[1], 2);
    SeenT stopped = {{}, 0};
    EXPECT_EQ(copied("tree", "stopped", see, &stopped), 0);
    EXPECT_EQ(stopped.numbers.size(), 4U);
}

TEST(FileService, copyingAFileOntoItselfKeepsIt)
{
    put("file", "precious");
    fs::create_hard_link("file", "hard");
    fs::create_symlink("file", "soft");
    for (const char* const alias : {"file", "hard", "soft"}) {
        EXPECT_EQ(copied("file", alias), TVXERR_COPY_OPEN_DESTINATION);
        EXPECT_THAT(recordedErrors(), ElementsAre(system(EINVAL), TVXERR_COPY_OPEN_DESTINATION));
    }
    EXPECT_EQ(fileText("file"), "precious");
}

TEST(FileService, everyStepOfACopyCanFail)
{
    put("file", std::string(5000, 'x'));
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    const size_t before = openDescriptors();
    EXPECT_EQ(copied("missing", "copy"), TVXERR_COPY_OPEN_SOURCE);
    EXPECT_THAT(recordedErrors(), ElementsAre(system(ENOENT), TVXERR_FILE_OPEN, TVXERR_COPY_OPEN_SOURCE));
    EXPECT_EQ(copied("fifo", "copy"), TVXERR_COPY_OPEN_SOURCE);
    EXPECT_THAT(recordedErrors(), ElementsAre(system(EINVAL), TVXERR_FILE_OPEN, TVXERR_COPY_OPEN_SOURCE));
    EXPECT_EQ(copied("file", "missing/copy"), TVXERR_COPY_OPEN_DESTINATION);
    EXPECT_THAT(recordedErrors(), ElementsAre(system(ENOENT), TVXERR_FILE_OPEN, TVXERR_COPY_OPEN_DESTINATION));
    EXPECT_FALSE(fs::exists("copy"));
    EXPECT_EQ(copied("file", "fifo"), TVXERR_COPY_OPEN_DESTINATION);   // nobody reads it
    EXPECT_THAT(recordedErrors(), ElementsAre(system(EINVAL), TVXERR_FILE_OPEN, TVXERR_COPY_OPEN_DESTINATION));
    const FaultC noRange("copy_file_range", ENOSYS, 0, 100);
    {
        const FaultC fault("read", EIO);
        EXPECT_EQ(copied("file", "copy"), TVXERR_COPY_READ);
        EXPECT_THAT(recordedErrors(), ElementsAre(system(EIO), TVXERR_COPY_READ));
    }
    {
        const FaultC fault("write", ENOSPC, 1);
        EXPECT_EQ(copied("file", "copy"), TVXERR_COPY_WRITE);
        EXPECT_THAT(recordedErrors(), ElementsAre(system(ENOSPC), TVXERR_COPY_WRITE));
        EXPECT_EQ(fs::file_size("copy"), 4096U);
    }
    {
        const FaultC fault("close", EIO, 0, 1);
        EXPECT_EQ(copied("file", "copy"), TVXERR_COPY_WRITE);
    }
    recordedErrors();
    EXPECT_EQ(openDescriptors(), before);
}

// What fits is there, what does not is told, and the source stays whole.
TEST(FileService, aFullFileSystemStopsACopy)
{
    put("file", std::string(100000, 'x'));
    fs::create_directory("small");
    const int result = inChild([] {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("none", "small", "tmpfs", 0, "size=64k") != 0) {
            return 77;
        }
        if (copied("file", "small/file") != TVXERR_COPY_WRITE) return 1;
        if (recordedErrors() != std::vector<ErrorT>{system(ENOSPC), TVXERR_COPY_WRITE}) return 2;
        if (renamed("file", "small/moved") != TVXERR_COPY_WRITE || fs::exists("small/moved")) return 3;
        if (fs::file_size("file") != 100000 || !removed("small/file", false, false)) return 4;
        put("fits", std::string(60000, 'y'));
        return renamed("fits", "small/fits") == 0 && fs::file_size("small/fits") == 60000 ? 0 : 5;
    });
    if (result == 77) GTEST_SKIP() << "not allowed to mount";
    EXPECT_EQ(result, 0);
}

// 3,000 levels do with 40 descriptors; where there is none at all, everything says so.
TEST(FileService, descriptorsMayRunOut)
{
    EXPECT_EQ(inChild([] {
                  const rlimit few = {40, 40};
                  ::setrlimit(RLIMIT_NOFILE, &few);
                  makeDeepTree(3000);
                  if (!removed("d", false, true) || fs::exists("d")) return 1;
                  if (!countsAllocations()) return 0;   // a sanitizer needs descriptors for itself
                  put("file");
                  fs::create_directory("dir");
                  put("dir/file");
                  while (::open("/dev/null", O_RDONLY | O_CLOEXEC) >= 0) {
                  }
                  recordedErrors();
                  if (copied("file", "copy") != TVXERR_COPY_OPEN_SOURCE) return 2;
                  if (recordedErrors()[0] != system(EMFILE) || removed("dir", false, true)) return 3;
                  const FileNameC start = named("dir");
                  FileListerC lister(&start, FileListerC::Recursive);
                  FileNameC* name = nullptr;
                  if (lister.getNext(&name) != 0 || name != nullptr || lister.getNext(&name) != EMFILE) return 4;
                  return made("dir/inner/innermost", true) ? 0 : 5;
              }),
              0);
}

TEST(FileService, movesBetweenFileSystemsByCopying)
{
    struct stat here;
    struct stat there;
    if (::stat(".", &here) != 0 || ::stat("/dev/shm", &there) != 0 || here.st_dev == there.st_dev) GTEST_SKIP();
    const std::string other = "/dev/shm/tvxcmn-fileservice-" + std::to_string(::getpid());
    put("file", "content");
    ASSERT_EQ(::chmod("file", 04751), 0);
    const FileNameC file = named("file");
    ASSERT_TRUE(FileService()->setLastModified(&file, 12345));
    EXPECT_EQ(renamed("file", other), 0);
    EXPECT_FALSE(fs::exists("file"));
    const FileNameC moved = named(other);
    EXPECT_EQ(FileService()->lastModified(&moved), 12345);
    EXPECT_EQ(modeOf(other.c_str()), 04751U);
    EXPECT_EQ(fileText(other), "content");
    EXPECT_THAT(recordedErrors(), IsEmpty());
    {
        const FaultC noRange("copy_file_range", ENOSYS, 0, 100);
        const FaultC fault("write", ENOSPC);
        EXPECT_EQ(renamed(other, "back"), TVXERR_COPY_WRITE);
    }
    EXPECT_FALSE(fs::exists("back"));
    EXPECT_EQ(fileText(other), "content");
    put("back", "old");
    {
        const FaultC fault("ftruncate", EIO);
        EXPECT_EQ(renamed(other, "back"), TVXERR_COPY_OPEN_DESTINATION);
    }
    EXPECT_EQ(fileText("back"), "old");
    {
        const FaultC fault("fsync", EINTR);
        EXPECT_EQ(renamed(other, "back"), 0);
    }
    EXPECT_EQ(renamed("back", other), 0);
    recordedErrors();
    fs::create_directory("dir");
    EXPECT_EQ(renamed("dir", other + ".dir"), system(EXDEV));
    EXPECT_THAT(recordedErrors(), ElementsAre(system(EXDEV)));
    EXPECT_TRUE(removed(other, false, false));
    EXPECT_EQ(renamed("missing", "x"), system(ENOENT));
    recordedErrors();
}

TEST(FileService, removesTreesAndNothingOutside)
{
    fs::create_directories("outside");
    put("outside/file");
    fs::create_directories("tree/a/b");
    fs::create_directory_symlink("../outside", "tree/link");
    put("tree/a/b/\xFF");
    EXPECT_FALSE(removed("tree", false, false));
    EXPECT_TRUE(removed("tree", false, true));
    EXPECT_FALSE(fs::exists("tree"));
    fs::create_directory_symlink("outside", "link");
    EXPECT_TRUE(removed("link", false, true));
    EXPECT_TRUE(fs::exists("outside/file"));
    EXPECT_TRUE(removed("missing", false, false));
    fs::create_directories("tree/a");
    EXPECT_FALSE(removed("tree/a/..", false, true));   // "tree" is still there, and empty
    EXPECT_TRUE(fs::is_empty("tree"));
    put("tree/file");
    {
        const FaultC fault("unlinkat", ENOENT, 1);   // listed, and yet missing
        EXPECT_FALSE(removed("tree", false, true));
    }
    EXPECT_TRUE(removed("tree", false, true));
    EXPECT_FALSE(removed("outside/file/below", false, false));
    EXPECT_THAT(recordedErrors(), IsEmpty());
}

// As somebody who is not allowed everything.
TEST(FileService, forceGivesTheMissingPermission)
{
    EXPECT_EQ(inChild([] {
                  if (::geteuid() == 0 && (::chmod(".", 0777) != 0 || ::setuid(65534) != 0)) return 1;
                  fs::create_directories("tree/closed/inner");
                  put("tree/closed/inner/file");
                  ::chmod("tree/closed/inner", 0555);
                  ::chmod("tree/closed", 0555);
                  if (removed("tree", false, true) || !fs::exists("tree/closed/inner/file")) return 2;
                  if (!removed("tree", true, true)) return 3;
                  fs::create_directory("closed");
                  put("closed/file");
                  ::chmod("closed/file", 0440);
                  ::chmod("closed", 0555);
                  if (removed("closed/file", true, false)) return 4;
                  if (modeOf("closed/file") != 0440) return 5;   // not left wider than it was
                  ::chmod("closed", 0755);
                  return removed("closed", true, true) ? 0 : 6;
              }),
              0);
}

TEST(FileService, aTreeThatIsExchangedForALinkLeadsNowhere)
{
    fs::create_directory("outside");
    put("outside/file");
    std::atomic<bool> isDone{false};
    std::thread swapper([&] {
        while (!isDone) {
            (void)::rename("tree/dir", "tree/aside");
            (void)::symlink("../outside", "tree/dir");
            (void)::unlink("tree/dir");
            (void)::rename("tree/aside", "tree/dir");
        }
    });
    for (int n = 0; n < 300; ++n) {
        fs::create_directory("tree");
        if (::mkdir("tree/dir", 0777) == 0) std::ofstream("tree/dir/x") << "x";
        removed("tree", false, true);
    }
    isDone = true;
    swapper.join();
    EXPECT_TRUE(fs::exists("outside/file"));
}

TEST(FileService, makesDirectoriesWithTheirParents)
{
    EXPECT_FALSE(made("a/b/c", false));
    EXPECT_TRUE(made("a/b/c", true));
    EXPECT_TRUE(made("a/b/c", false));
    put("file");
    EXPECT_FALSE(made("file", true) || made("file/x", true) || made("/", true));
    EXPECT_TRUE(made("", true));
    fs::create_symlink("nowhere", "dangling");
    EXPECT_FALSE(made("dangling", true));
    std::string deep = "d";
    while (deep.size() < 4000) deep += "/d";
    EXPECT_TRUE(made(deep, true));
    EXPECT_TRUE(fs::is_directory(deep));
    EXPECT_TRUE(removed("d", false, true));

    ASSERT_EQ(::chmod("a", 0711), 0);
    FlnFileServiceC service;
    const FileNameC from = named("a");
    const FileNameC to = named("t");
    const FileNameC nowhere = named("none/t");
    EXPECT_EQ(service.mkdirTemplate(&from, &to), 0);
    EXPECT_EQ(modeOf("t"), 0711U);
    EXPECT_EQ(service.mkdirTemplate(&from, &nowhere), TVXERR_FILE_CREATE_DIRECTORY);
    EXPECT_THAT(recordedErrors(), ElementsAre(system(ENOENT), TVXERR_FILE_CREATE_DIRECTORY));
}

TEST(FileService, processesThatMakeOneTreeAllSucceed)
{
    std::vector<int> children;
    for (int n = 0; n < 4; ++n) {
        children.push_back(forkChild());
        if (children.back() != 0) continue;
        for (int round = 0; round < 200; ++round) {
            const std::string tree = "round" + std::to_string(round) + "/a/b/c/d";
            if (!made(tree, true) || !fs::is_directory(tree)) _exit(1);
        }
        _exit(getErrBuf(2)->count() == 0 ? 0 : 2);
    }
    for (const int child : children) EXPECT_EQ(waitForChild(child), 0);
}

TEST(FileService, emptyFoldersGoUpToTheLimit)
{
    ASSERT_TRUE(made("Keep/a/b/c", true) && made("Keep/a2/b", true));
    StringC limit("kEEP");
    FileService()->removeEmptyFolderLeaveToRoot(named("Keep/a/b/c"), &limit);
    EXPECT_TRUE(fs::exists("Keep/a2") && !fs::exists("Keep/a"));
    FileService()->removeEmptyFolderLeaveToRoot(named("Keep/a2/b"), &limit);
    EXPECT_TRUE(fs::exists("Keep") && fs::is_empty("Keep"));
    put("other");
    FileService()->removeEmptyFolderLeaveToRoot(named("Keep"), nullptr);
    EXPECT_FALSE(fs::exists("Keep"));
}

TEST(FileService, temporaryNamesAreFree)
{
    std::srand(1);
    std::vector<std::string> taken;
    for (int n = 0; n < 3; ++n) put(taken.emplace_back("x" + std::to_string(std::rand()) + ".tmp"));
    std::srand(1);
    const FileNameC here = named(".");
    const std::unique_ptr<FileNameC> name(FileService()->createTempFile(&here, "x", ".tmp", 1));
    ASSERT_NE(name, nullptr);
    EXPECT_TRUE(fs::exists(str(*name)) && fs::is_empty(str(*name)));
    EXPECT_THAT(recordedErrors(), IsEmpty());
    std::srand(1);
    const std::unique_ptr<FileNameC> looked(FileService()->createTempFile(nullptr, "x", ".tmp", 0));
    EXPECT_FALSE(fs::exists(str(*looked)));

    const FileNameC nowhere = named("nowhere");
    EXPECT_EQ(FileService()->createTempFile(&nowhere, "x", "", 1), nullptr);
    EXPECT_THAT(recordedErrors(), ElementsAre(system(ENOENT), TVXERR_FILE_OPEN));

    const std::unique_ptr<FileNameC> temp(FileService()->createTempFile("prefix", ""));
    EXPECT_TRUE(str(temp->getBase("")).starts_with("prefi"));
    EXPECT_EQ(str(temp->getBase("")).size(), 11U);
}

TEST(FileService, theCurrentDirectoryCanBeChanged)
{
    FileNameC before;
    ASSERT_EQ(FileService()->getCWD(&before), 0);
    EXPECT_EQ(str(before), fs::current_path().string());
    fs::create_directory("dir");
    EXPECT_EQ(FileService()->setCWD(named("dir")), 0);
    FileNameC inner;
    EXPECT_EQ(FileService()->getCWD(&inner), 0);
    EXPECT_EQ(str(inner), str(before) + "/dir");
    EXPECT_EQ(FileService()->setCWD(before), 0);
    EXPECT_EQ(FileService()->setCWD(named("missing")), TVXERR_FILE_CHANGE_DIRECTORY);
    EXPECT_THAT(recordedErrors(), ElementsAre(system(ENOENT), TVXERR_FILE_CHANGE_DIRECTORY));
}

TEST(FileService, informationAndItsFailuresAreReported)
{
    put("file", "123");
    fs::create_symlink("file", "link");
    const FileNameC link = named("link");
    const FileNameC missing = named("missing");
    const std::unique_ptr<FileInfoC> seen(FileService()->getInfo(&link, 0));
    const std::unique_ptr<FileInfoC> followed(FileService()->getInfo(&link, 1));
    EXPECT_EQ(seen->mode(), FILEINFO_MODELNK);
    EXPECT_EQ(followed->size(), 3);
    const std::unique_ptr<FileNameC> target(FileService()->readLink(&link));
    EXPECT_EQ(str(*target), "file");
    long status = -1;
    EXPECT_EQ(FileService()->length(&link, &status), 3);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(FileService()->isLink(&link) && FileService()->isFile(&link) && FileService()->exists(&link));
    EXPECT_THAT(recordedErrors(), IsEmpty());

    EXPECT_EQ(FileService()->length(&missing, &status), -1);
    EXPECT_EQ(status, system(ENOENT));
    EXPECT_EQ(FileService()->getInfo(&missing, 1), nullptr);
    EXPECT_EQ(FileService()->diskFree(&missing), -1);
    EXPECT_EQ(FileService()->readLink(&missing), nullptr);
    EXPECT_EQ(FileService()->cloneAttributes(&missing, &link), system(ENOENT));
    EXPECT_EQ(recordedErrors(), std::vector<ErrorT>(5, system(ENOENT)));
    EXPECT_FALSE(FileService()->exists(&missing) || FileService()->lastModified(&missing) != 0);
    EXPECT_THAT(recordedErrors(), IsEmpty());
    const std::unique_ptr<FileNameArrayC> roots(FileService()->listRoots());
    ASSERT_EQ(roots->size(), 1U);
    EXPECT_TRUE((*roots)[0]->isRoot());
}

TEST(FileService, removesLaterWhatItWasToldInItsOwnProcess)
{
    fs::create_directory("dir");
    put("dir/file");
    const FileNameC dir = named("dir");
    {
        FlnFileServiceC service;
        service.removeLater(&dir);
        EXPECT_EQ(inChild([&] {
                      service.removeQueued();
                      return fs::exists("dir/file") ? 0 : 1;
                  }),
                  0);
        EXPECT_TRUE(fs::exists("dir/file"));
    }
    EXPECT_FALSE(fs::exists("dir"));

    put("own");
    const int pid = forkChild();
    if (pid == 0) {
        const FileNameC own = named("own");
        FileService()->removeLater(&own);
        std::exit(0);   // with its handlers
    }
    EXPECT_EQ(waitForChild(pid), 0);
    EXPECT_FALSE(fs::exists("own"));
}

TEST(FileService, anotherOneCanTakeItsPlace)
{
    class OtherC : public FlnFileServiceC {
    public:
        IOStreamC* openFile(const FileNameC&, FileStreamC::FileOpenModeT mode, FileStreamC::FileAccessT access,
                            FileStreamC::FileShareT sharing, bool waits) override
        {
            return FlnFileServiceC::openFile(named("real"), mode, access, sharing, waits);
        }
        FileInfoC* getInfo(const FileNameC* name, BooleanT) override
        {
            asked.push_back(str(*name));
            ErrorErrno(EIO);
            return nullptr;
        }
        std::vector<std::string> asked;
    };
    put("real", "text");
    OtherC other;
    SetFileService(&other);
    const std::unique_ptr<StreamReaderC> reader(
        StreamReaderC::openFile(named("virtual"), false, nullptr, FileStreamC::SHARE_READWRITE, false));
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(str(reader->readToEnd()), "text");
    const FileNameC here = named(".");
    FileListingC listing(new FileListerC(&here, 0));
    SetFileService(nullptr);
    EXPECT_THAT(other.asked, ElementsAre("real"));
    EXPECT_THAT(recordedErrors(), IsEmpty());
    EXPECT_NE(FileService(), &other);
}
