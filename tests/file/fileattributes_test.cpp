#include "file/fileattributes.h"

#include "cmnlib/syscall.h"
#include "file/filesupport.h"
#include "filenamearray.h"
#include "support/system.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sys/socket.h>
#include <sys/un.h>

namespace fa = fileattributes;
namespace fs = std::filesystem;

namespace {

mode_t modeOf(const char* path)
{
    struct stat info = {};
    ::stat(path, &info);
    return info.st_mode & 07777;
}

FileInfoModeT kindOf(const char* path, fa::LinksT links)
{
    const FileNameC name = named(path);
    struct stat info;
    return fa::read(&name, links, info) == 0 ? fa::infoOf(info).mode() : FILEINFO_MODEUNKNOWN;
}

void makeSocket(const char* path)
{
    const FdOwnerC fd(::socket(AF_UNIX, SOCK_STREAM, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path);
    ASSERT_EQ(::bind(fd.fd(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
}

}   // namespace

TEST(FileAttributes, everyKindOfFileIsTold)
{
    std::ofstream("file") << "12345";
    fs::create_directory("dir");
    fs::create_symlink("file", "link");
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    makeSocket("socket");
    EXPECT_EQ(kindOf("file", fa::LinksT::SEEN), FILEINFO_MODEFILE);
    EXPECT_EQ(kindOf("dir", fa::LinksT::SEEN), FILEINFO_MODEDIR);
    EXPECT_EQ(kindOf("fifo", fa::LinksT::SEEN), FILEINFO_MODEFIFO);
    EXPECT_EQ(kindOf("socket", fa::LinksT::SEEN), FILEINFO_MODESOCK);
    EXPECT_EQ(kindOf("/dev/null", fa::LinksT::SEEN), FILEINFO_MODECHR);
    EXPECT_EQ(kindOf("link", fa::LinksT::SEEN), FILEINFO_MODELNK);
    EXPECT_EQ(kindOf("link", fa::LinksT::FOLLOWED), FILEINFO_MODEFILE);
    EXPECT_EQ(kindOf("missing", fa::LinksT::SEEN), FILEINFO_MODEUNKNOWN);
}

TEST(FileAttributes, namesThatTheSystemWouldCutAreRefused)
{
    std::ofstream("a") << "x";
    const FileNameC cut(StringC("a\0b", 3, StringC::CC_VALID_UTF8));
    struct stat info;
    EXPECT_EQ(fa::read(&cut, fa::LinksT::SEEN, info), EINVAL);
    EXPECT_EQ(fa::setReadOnly(&cut, true), EINVAL);
    EXPECT_EQ(fa::read(nullptr, fa::LinksT::SEEN, info), EINVAL);
    EXPECT_FALSE(fa::isReadable(&cut) || fa::isWritable(nullptr));
}

TEST(FileAttributes, writePermissionFollowsReadPermission)
{
    std::ofstream("file") << "x";
    const FileNameC file = named("file");
    const struct {
        mode_t before, readOnly, writable;
    } rows[] = {{0644, 0444, 0666}, {0755, 0555, 0777}, {0600, 0400, 0600}, {04640, 04440, 04660}, {0222, 0, 0}};
    for (const auto& row : rows) {
        ASSERT_EQ(::chmod("file", row.before), 0);
        EXPECT_EQ(fa::setReadOnly(&file, true), 0);
        EXPECT_EQ(modeOf("file"), row.readOnly);
        EXPECT_TRUE(fa::isReadOnly(&file));
        EXPECT_EQ(fa::setReadOnly(&file, false), 0);
        EXPECT_EQ(modeOf("file"), row.writable);
    }
    const FileNameC missing = named("missing");
    EXPECT_EQ(fa::setReadOnly(&missing, true), ENOENT);
    EXPECT_FALSE(fa::isReadOnly(&missing));
}

TEST(FileAttributes, aRunningProgramIsNotWritable)
{
    const std::string self = fs::read_symlink("/proc/self/exe");
    const FileNameC name = named(self);
    EXPECT_TRUE(fa::isReadable(&name));
    EXPECT_FALSE(fa::isWritable(&name));
    const size_t before = openDescriptors();
    const FileNameC here = named(".");
    EXPECT_TRUE(fa::isWritable(&here));
    EXPECT_EQ(openDescriptors(), before);
}

TEST(FileAttributes, theAccessTimeOutlivesANewModificationTime)
{
    std::ofstream("file") << "x";
    const timespec times[] = {{1000, 123456789}, {2000, 5}};
    ASSERT_EQ(::utimensat(AT_FDCWD, "file", times, 0), 0);
    const FileNameC file = named("file");
    EXPECT_EQ(fa::setLastModified(&file, 3000), 0);
    struct stat info;
    ASSERT_EQ(fa::read(&file, fa::LinksT::FOLLOWED, info), 0);
    EXPECT_EQ(info.st_atim.tv_nsec, 123456789);
    EXPECT_EQ(fa::infoOf(info).modified(), 3000);
    EXPECT_EQ(fa::infoOf(info).accessed(), 1000);
    EXPECT_EQ(fa::infoOf(info).size(), 1);
}

TEST(FileAttributes, aCloneKeepsSetIdBits)
{
    std::ofstream("from") << "x";
    std::ofstream("to") << "y";
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown("from", 12, 34), 0);
    }
    ASSERT_EQ(::chmod("from", 04755), 0);
    const FileNameC from = named("from");
    const FileNameC to = named("to");
    EXPECT_EQ(fa::clone(&from, &to), 0);
    EXPECT_EQ(modeOf("to"), 04755U);
    struct stat source;
    struct stat target;
    ASSERT_EQ(::stat("from", &source) + ::stat("to", &target), 0);
    EXPECT_EQ(source.st_uid, target.st_uid);
    EXPECT_EQ(source.st_gid, target.st_gid);
    const FileNameC missing = named("missing");
    EXPECT_EQ(fa::clone(&missing, &to), ENOENT);
}

TEST(FileAttributes, linksAreReadAsBytes)
{
    fs::create_symlink("some\xFFwhere/else", "link");
    const FileNameC link = named("link");
    FileNameC target;
    ASSERT_EQ(fa::readLink(&link, target), 0);
    EXPECT_EQ(str(target), "some\xFFwhere/else");
    const FileNameC here = named(".");
    EXPECT_EQ(fa::readLink(&here, target), EINVAL);
    FileSizeT bytes = 0;
    EXPECT_EQ(fa::diskFree(&here, bytes), 0);
    EXPECT_NEAR(static_cast<double>(bytes), static_cast<double>(fs::space(".").available), 1e9);   // others write
}

TEST(FileNameArray, ownsItsNamesOrNot)
{
    FileNameArrayC owner;
    owner.add(new FileNameC(named("b")));
    owner.add(new FileNameC(named("c")));
    owner.add(0, new FileNameC(named("d")));
    owner.sort();
    EXPECT_EQ(str(*owner[0]) + str(*owner[1]) + str(*owner[2]), "bcd");
    owner.sort([](void*, const FileNameC* a, const FileNameC* b) { return b->compareTo(a); }, nullptr);
    EXPECT_EQ(str(*owner[0]), "d");

    const std::unique_ptr<FileNameC> first(owner.remove(0));
    const std::unique_ptr<FileNameC> second(owner.put(0, new FileNameC(named("e"))));
    EXPECT_EQ(str(*first) + str(*second), "dc");
    FileNameArrayC borrower(false);
    borrower.add(owner[0]);
    borrower.destroy(0);
    owner.destroy(0);
    EXPECT_EQ(owner.size(), 1U);
    owner.destroyAll();
    EXPECT_EQ(owner.size(), 0U);
}
