#include "pathname.h"

#include "support/faults.h"
#include "support/helpers.h"
#include "support/system.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// The result in a buffer of exactly the size that the header asks for, so that a byte too many shows.
template <typename RoutineT>
std::string apart(const std::string& path, RoutineT routine)
{
    std::vector<char> source(path.c_str(), path.c_str() + path.size() + 1);
    std::vector<char> result(std::max<size_t>(path.size(), 1) + 1);
    EXPECT_EQ(routine(source.data(), result.data()), result.data());
    EXPECT_STREQ(source.data(), path.c_str()) << "the source is left alone";
    return result.data();
}

template <typename RoutineT>
std::string inPlace(const std::string& path, RoutineT routine)
{
    std::vector<char> buffer(path.c_str(), path.c_str() + path.size() + 1);
    const char* const result = routine(buffer.data(), nullptr);
    EXPECT_EQ(result, buffer.data());
    return buffer.data();
}

std::string baseName(const std::string& path)
{
    const auto routine = [](char* src, char* dst) { return BaseName(src, dst, nullptr); };
    const std::string result = apart(path, routine);
    EXPECT_EQ(inPlace(path, routine), result) << path;
    return result;
}

std::string dirFileName(const std::string& path)
{
    const std::string result = apart(path, DirFileName);
    if (path.empty()) return result;
    EXPECT_EQ(inPlace(path, DirFileName), result) << path;
    return result;
}

std::vector<std::string> randomPaths(unsigned seed, int count)
{
    TextSourceC source(seed);
    std::vector<std::string> paths = {"/", "//", "a", "a/", "/a"};
    for (int i = 0; i < count; ++i) {
        std::string path;
        for (uint32_t parts = 1 + source.below(6); parts > 0; --parts) path += source.below(2) == 0 ? "/" : "b\xFF";
        paths.push_back(path);
    }
    return paths;
}

std::vector<std::string> resultsOf(std::vector<std::string> command, const std::vector<std::string>& paths)
{
    command.insert(command.end(), paths.begin(), paths.end());
    return splitText(programOutput(command), '\0');
}

void writeFile(const std::string& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

}   // namespace

TEST(PathName, partsAreWhatTheSystemsProgramsGive)
{
    const std::vector<std::string> paths = randomPaths(/*seed=*/71, 400);
    const std::vector<std::string> bases = resultsOf({"basename", "-az", "--"}, paths);
    const std::vector<std::string> dirs = resultsOf({"dirname", "-z", "--"}, paths);
    ASSERT_EQ(bases.size(), paths.size());
    ASSERT_EQ(dirs.size(), paths.size());
    for (size_t i = 0; i < paths.size(); ++i) {
        SCOPED_TRACE(paths[i]);
        EXPECT_EQ(baseName(paths[i]), bases[i] == "/" ? "" : bases[i]);
        EXPECT_EQ(dirFileName(paths[i]), dirs[i]);
    }
}

TEST(PathName, edgesOfTheParts)
{
    const struct {
        const char* path;
        const char* dir;
        const char* cut;   // the base without ".c"
    } rows[] = {{"/a/b", "/a/", "b"}, {"/a.c", "/", "a"}, {"a/", ".", "a"}, {"/", "/", ""},         {"", ".", ""},
                {"a", ".", "a"},      {".c", ".", ""},    {"c", ".", "c"},  {"a//b.c/", "a//", "b"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(apart(row.path, DirName), row.dir);
        EXPECT_EQ(inPlace(row.path, [](char* src, char* dst) { return BaseName(src, dst, ".c"); }), row.cut);
    }
    char empty[1] = "";
    EXPECT_EQ(DirName(empty, nullptr), nullptr) << "there is no room for the \".\"";
    EXPECT_EQ(DirFileName(empty, empty), nullptr);
    EXPECT_EQ(DirName(nullptr, empty), nullptr);
    EXPECT_EQ(BaseName(nullptr, empty, nullptr), nullptr);
    EXPECT_STREQ(BaseNameP("a/b/"), "");
    EXPECT_STREQ(BaseNameP("ab"), "ab");
    EXPECT_STREQ(Strrpbrk("a.b,c", ".,"), ",c");
    EXPECT_EQ(Strrpbrk("", "."), nullptr);
    EXPECT_EQ(Strrpbrk("abc", "."), nullptr);
    const char* const fixed[][2] = {{"", ""}, {"/", "/"}, {"///", "/"}, {"//a///b//", "/a/b"}, {"a/", "a"}};
    for (const auto& row : fixed) EXPECT_STREQ(std::unique_ptr<char[]>(FixUpPath(row[0])).get(), row[1]);
}

TEST(PathName, currentDirectoryNeedsRoomForItsTerminator)
{
    const std::string here = fs::current_path();
    std::vector<char> exact(here.size() + 1, 'x');
    EXPECT_EQ(GetCWD(exact.data(), exact.size()), here.size());
    EXPECT_EQ(exact.data(), here);
    std::vector<char> small(here.size(), 'x');
    EXPECT_EQ(GetCWD(small.data(), small.size()), here.size());
    EXPECT_EQ(small[0], 'x') << "nothing is copied when there is no room";
    EXPECT_EQ(GetCWD(nullptr, 0), here.size());

    ASSERT_EQ(Mkdir("gone"), 0);
    ASSERT_EQ(Chdir("gone//"), 0);
    ASSERT_EQ(Rmdir((here + "//gone/").c_str()), 0);
    EXPECT_EQ(GetCWD(exact.data(), exact.size()), 0u);
    EXPECT_EQ(exact[0], 0);
    ASSERT_EQ(Chdir(here.c_str()), 0);
}

TEST(PathName, failuresAreToldByErrno)
{
    writeFile("file", "12345");
    const struct {
        const char* name;
        int error;
        std::function<bool()> fails;
    } rows[] = {
        {"mkdir null", EINVAL, [] { return Mkdir(nullptr) == -1; }},
        {"rmdir null", EINVAL, [] { return Rmdir(nullptr) == -1; }},
        {"chdir null", EINVAL, [] { return Chdir(nullptr) == -1; }},
        {"open null", EINVAL, [] { return Open(nullptr, O_RDONLY) == -1; }},
        {"fopen without mode", EINVAL, [] { return Fopen("file", nullptr) == nullptr; }},
        {"fopen with a wrong mode", EINVAL, [] { return Fopen("file", "z") == nullptr; }},
        {"copy to null", EINVAL, [] { return CmnCopyFile("file", nullptr) == -1; }},
        {"size of null", EINVAL, [] { return FileSize(nullptr) == -1; }},
        {"space of null", EINVAL, [] { return FileSpaceAvail(nullptr) == -1; }},
        {"mkdir of a file", EEXIST, [] { return Mkdir("file") == -1; }},
        {"fopen of nothing", ENOENT, [] { return Fopen("none", "r") == nullptr; }},
        {"fopen to create anew", EEXIST, [] { return Fopen("file", "wx") == nullptr; }},
        {"remove of a directory", EISDIR, [] { return RemoveFile(".") == -1; }},
        {"copy of nothing", ENOENT, [] { return CmnCopyFile("none", "to") == -1; }},
        {"copy of a directory", EISDIR, [] { return CmnCopyFile(".", "to") == -1; }},
        {"copy onto itself", EINVAL, [] { return CmnCopyFile("file", "./file") == -1; }},
        {"copy to a full device", ENOSPC, [] { return CmnCopyFile("file", "/dev/full") == -1; }},
    };
    for (const auto& row : rows) {
        const size_t before = openDescriptors();
        errno = 0;
        EXPECT_TRUE(row.fails()) << row.name;
        EXPECT_EQ(errno, row.error) << row.name;
        EXPECT_EQ(openDescriptors(), before) << row.name;
    }
    EXPECT_EQ(fileText("file"), "12345");
    EXPECT_FALSE(FileExists("to"));
    EXPECT_EQ(FileSize("file"), 5);
    struct statvfs info;
    ASSERT_EQ(statvfs(".", &info), 0);
    EXPECT_NEAR(static_cast<double>(FileSpaceAvail(".")), static_cast<double>(info.f_bavail * info.f_frsize), 1e9);
    EXPECT_EQ(RenameFile("file", "moved"), 0);
    EXPECT_EQ(RemoveFile("moved"), 0);
    EXPECT_FALSE(FileExists("moved"));
}

TEST(PathName, descriptorsStayClearOfTheStandardStreamsAndOfChildren)
{
    writeFile("file", "text");
    const int status = inChild([] {
        close(STDIN_FILENO);
        close(STDERR_FILENO);
        const int first = Open("file", O_RDONLY);
        FILE* const second = Fopen("file", "r+");
        const int third = Creat("other", 0600);
        for (const int fd : {first, fileno(second), third}) {
            if (fd < 3 || (fcntl(fd, F_GETFD) & FD_CLOEXEC) == 0) return 1;
        }
        return fcntl(STDIN_FILENO, F_GETFD) == -1 && fcntl(STDERR_FILENO, F_GETFD) == -1 ? 0 : 2;
    });
    EXPECT_EQ(status, 0);
}

TEST(PathName, modesOfFopenDoWhatTheyDoInTheCLibrary)
{
    for (const char* const mode : {"r", "r+", "w", "w+", "a", "a+b", "wbx", "rb"}) {
        std::string results[2];
        for (const bool ours : {false, true}) {
            writeFile("file", "0123456789");
            FILE* const file = ours ? Fopen("file", mode) : std::fopen("file", mode);
            if (file != nullptr) {
                results[ours] = std::to_string(std::ftell(file)) + " ";
                std::fputs("xy", file);
                std::rewind(file);
                results[ours] += std::fgetc(file) == EOF ? "no read " : "read ";
                std::fclose(file);
            }
            results[ours] += fileText("file");
        }
        EXPECT_EQ(results[0], results[1]) << mode;
    }
}

TEST(CopyFile, copiesContentsAndModeHoweverTheSystemHandsThemOver)
{
    TextSourceC source(/*seed=*/72);
    for (const size_t size : {0ul, 1ul, 4096ul, 4097ul, 1000000ul}) {
        std::string text = source.bytes(1);
        text.resize(size, 'q');
        writeFile("from", text);
        chmod("from", 0640);
        const std::pair<const char*, int> faults[] = {{"none", 0},  {"copy_file_range", 0}, {"copy_file_range", EXDEV},
                                                      {"write", 0}, {"write", EINTR},       {"open", EINTR},
                                                      {"read", 0},  {"read", EINTR}};
        for (const auto& [call, error] : faults) {
            SCOPED_TRACE(std::string(call) + " " + std::to_string(error) + " " + std::to_string(size));
            const bool byBlocks = std::string_view(call) == "write" || std::string_view(call) == "read";
            const FaultC noRange(byBlocks ? "copy_file_range" : "none", ENOSYS, 0, INT_MAX);
            const FaultC fault(call, error, 0, error == 0 ? INT_MAX : 1);
            ASSERT_EQ(CmnCopyFile("from", "to"), 0);
            EXPECT_EQ(fileText("to"), text);
            struct stat info;
            stat("to", &info);
            EXPECT_EQ(info.st_mode & 0777, 0640u);
            RemoveFile("to");
        }
    }
    writeFile("to", std::string(100, 'x'));
    ASSERT_EQ(CmnCopyFile("/proc/self/cmdline", "to"), 0);
    EXPECT_EQ(fileText("to"), fileText("/proc/self/cmdline")) << "a file that has no length";
}

TEST(CopyFile, reportsWhatFailedAndLeavesNoDescriptor)
{
    writeFile("from", std::string(100000, 'q'));
    const std::pair<const char*, int> faults[] = {{"open", EMFILE}, {"fstat", EIO}, {"ftruncate", EIO},
                                                  {"read", EIO},    {"write", EIO}, {"close", EIO}};
    const size_t before = openDescriptors();
    for (const auto& [call, error] : faults) {
        for (const int skip : {0, 1}) {
            const FaultC noRange("copy_file_range", ENOSYS, 0, INT_MAX);
            const FaultC fault(call, error, skip);
            const int result = CmnCopyFile("from", "to");
            if (fault.calls() <= skip || (skip == 1 && std::string_view(call) == "close")) continue;
            EXPECT_EQ(result, -1) << call;
            EXPECT_EQ(errno, error) << call;
        }
        EXPECT_EQ(openDescriptors(), before) << call;
    }
    const FaultC interrupted("close", EINTR);
    EXPECT_EQ(CmnCopyFile("from", "to"), 0);
    EXPECT_EQ(interrupted.calls(), 2) << "one descriptor, one close";
}

TEST(CopyFile, stopsAtTheFileSizeLimit)
{
    writeFile("from", std::string(100000, 'q'));
    const int status = inChild([] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {50000, 50000};
        setrlimit(RLIMIT_FSIZE, &limit);
        return CmnCopyFile("from", "to") == -1 && errno == EFBIG && FileSize("to") == 50000 ? 0 : 1;
    });
    EXPECT_EQ(status, 0);
}
