// The registry between processes and against failures: the file is the old or the new one, and no change is lost.

#include "confapi/registrysupport.h"

#include "configuration.h"
#include "confregistry.h"
#include "errorapi.h"
#include "support/faults.h"
#include "support/helpers.h"
#include "support/system.h"
#include "tvxcmn.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <memory>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>

namespace {

namespace fs = std::filesystem;

const char TEXT[] = "; head\n[S]\nn=old\nkept=1\n";
const char NEW_TEXT[] = "; head\n[S]\nn=new\nkept=1\n";
const char* const CALLS[] = {"open",  "read",   "write",  "close",     "fcntl", "stat",
                             "fstat", "rename", "fchmod", "fdatasync", "fsync", "unlink"};   // of a save

bool hasLine(const char* line) { return fileText(INI).find(std::string("\n") + line + "\n") != std::string::npos; }

// Any one call of the system fails, in any way, while one value is saved.
TEST(ConfRegSave, leavesTheOldOrTheNewFileWhateverFails)
{
    for (const char* const call : CALLS) {
        for (const int error : {ENOSPC, EIO, EINTR, EMFILE, EACCES}) {
            for (int skip = 0, calls = 1; skip < calls; ++skip) {
                SCOPED_TRACE(testing::Message() << call << " number " << skip << ", errno " << error);
                writeIni(TEXT);
                VendorRegistryC registry;
                {
                    const FaultC fault(call, error, skip);
                    EXPECT_EQ(registry.set("S", "n", "new"), 0);
                    calls = fault.calls();
                }
                const std::string text = fileText(INI);
                EXPECT_TRUE(text == TEXT || text == NEW_TEXT) << text;
                EXPECT_EQ(registry.get("S", "n"), "new");
                EXPECT_EQ(VendorRegistryC().set("S", "other", "2"), 0);   // the next writer
                EXPECT_TRUE(hasLine("other=2"));
                EXPECT_EQ(registry.set("S", "third", "3"), 0);   // brings along what could not be saved
                EXPECT_EQ(fileText(INI), "; head\n[S]\nn=new\nkept=1\nother=2\nthird=3\n");
                EXPECT_FALSE(fs::exists("v.ini.tmp"));
                EXPECT_FALSE(fs::exists("v.ini.lck"));
                if (testing::Test::HasFailure()) return;
            }
        }
    }
}

// What a killed process leaves behind is no obstacle, and gone after the next save.
TEST(ConfRegSave, leavesTheOldOrTheNewFileWhenKilledAtAnyCall)
{
    const int KILLED = -1;
    for (const char* const call : CALLS) {
        for (int skip = 0, status = KILLED; status == KILLED; ++skip) {
            SCOPED_TRACE(testing::Message() << "killed at " << call << " number " << skip);
            writeIni(TEXT);
            status = inChild([&] {
                VendorRegistryC registry;
                const FaultC fault(
                    call, [] { std::raise(SIGKILL); }, skip);
                return registry.set("S", "n", "new") == 0 ? 0 : 1;
            });
            EXPECT_TRUE(status == 0 ? skip > 0 : status == KILLED) << status;
            const std::string text = fileText(INI);
            EXPECT_TRUE(text == NEW_TEXT || (status == KILLED && text == TEXT)) << text;
            EXPECT_EQ(VendorRegistryC().set("S", "other", "2"), 0);
            EXPECT_TRUE(hasLine("other=2"));
            EXPECT_FALSE(fs::exists("v.ini.tmp"));
            EXPECT_FALSE(fs::exists("v.ini.lck"));
            if (testing::Test::HasFailure()) return;
        }
    }
}

// An editor takes no lock: it writes the file, or removes it, between the reading and the renaming of a save.
TEST(ConfRegSave, mergesAgainWithWhatHasChangedMeanwhile)
{
    const struct {
        const char* before;   // null: there is no file
        const char* edited;
        const char* after;
    } rows[] = {{TEXT, "[S]\nkept=2\n[T]\nx=1\n", "[S]\nkept=2\nn=new\n[T]\nx=1\n"},
                {"", "; c\n[S]\nn=1\n", "; c\n[S]\nn=new\n"},
                {nullptr, "[S]\nm=1\n", "[S]\nm=1\nn=new\n"},
                {TEXT, nullptr, "\n[S]\n\nn=new\n"}};
    const auto put = [](const char* text) { text != nullptr ? writeIni(text) : static_cast<void>(fs::remove(INI)); };
    for (const auto& row : rows) {
        put(row.before);
        VendorRegistryC registry;
        const FaultC edit("fdatasync", [&] { put(row.edited); });
        EXPECT_EQ(registry.set("S", "n", "new"), 0);
        EXPECT_EQ(registry.SetWriteThrough(true), 0);
        EXPECT_EQ(fileText(INI), row.after);
    }
    writeIni(TEXT);
    VendorRegistryC registry;
    std::string text = TEXT;
    const FaultC edits(
        "fdatasync", [&] { writeIni(text += "; more\n"); }, 0, 100);
    EXPECT_EQ(registry.set("S", "n", "new"), 0);
    EXPECT_EQ(registry.SetWriteThrough(true), TVXERR_REGISTRY_FAILURE);
    EXPECT_EQ(errno, EBUSY);
    EXPECT_EQ(fileText(INI), text);
    EXPECT_FALSE(fs::exists("v.ini.tmp"));
}

TEST(ConfRegSave, judgesWhatToDeleteByTheFileOfNow)
{
    writeIni("[S]\n[T]\nn=1\n");
    waitForNextSecond();
    VendorRegistryC first;
    VendorRegistryC second;
    EXPECT_EQ(second.set("S", "n", "1"), 0);
    EXPECT_EQ(second.set("T", "m", "1"), 0);
    EXPECT_EQ(first.DeleteKey(HKEY_LOCAL_MACHINE, VendorRegistryC::below("S"), false), TVXERR_REGISTRY_NOT_EMPTY);
    EXPECT_EQ(second.set("T", "o", "1"), 0);
    EXPECT_EQ(first.DeleteValue(HKEY_LOCAL_MACHINE, VendorRegistryC::below("T"), "o"), 0);
    EXPECT_EQ(fileText(INI), "[S]\nn=1\n[T]\nn=1\nm=1\n");
}

TEST(ConfRegSave, tellsWhyItFailedAndKeepsTheChangeOverOthersChanges)
{
    writeIni(TEXT);
    VendorRegistryC registry;
    {
        const FaultC fault("write", ENOSPC, 0, 100);
        EXPECT_EQ(registry.set("S", "n", "mine"), 0);
        EXPECT_EQ(registry.set("New", "a", "1"), 0);
        EXPECT_EQ(registry.DeleteValue(HKEY_LOCAL_MACHINE, VendorRegistryC::below("S"), "kept"), 0);
        EXPECT_EQ(registry.SetWriteThrough(true), TVXERR_REGISTRY_FAILURE);
        EXPECT_EQ(errno, ENOSPC);
    }
    {
        const FaultC fault("rename", EIO, 0, 100);
        EXPECT_EQ(registry.SetWriteThrough(true), ErrorOfErrno(EIO));
    }
    EXPECT_EQ(fileText(INI), TEXT);
    writeIni("[S]\nn=theirs\nkept=2\nother=2\n");
    waitForNextSecond();
    EXPECT_EQ(registry.get("S", "other"), "2");
    EXPECT_EQ(registry.get("S", "n"), "mine");
    EXPECT_EQ(registry.get("S", "kept"), "!69");
    EXPECT_EQ(registry.get("New", "a"), "1");
    const FaultC fault("fsync", EIO, 0, 100);   // of the directory, when the file is the new one
    EXPECT_EQ(registry.SetWriteThrough(true), 0);
    EXPECT_EQ(fault.calls(), 1);
    EXPECT_EQ(fileText(INI), "[S]\nn=mine\nother=2\n\n[New]\n\na=1\n");
}

TEST(ConfRegSave, seesWhatOthersWroteInTheSameSecond)
{
    writeIni("[S]\nn=1\nm=1\n");
    waitForNextSecond();
    VendorRegistryC reader;
    EXPECT_EQ(reader.get("S", "n"), "1");
    writeIni("[S]\nn=2\nm=2\n");   // as long as before
    EXPECT_EQ(reader.get("S", "n"), "1");
    waitForNextSecond();
    {
        const FaultC fault("open", EMFILE, 0, 1);   // read again when there are descriptors
        EXPECT_EQ(reader.get("S", "n"), "1");
    }
    waitForNextSecond();
    EXPECT_EQ(reader.get("S", "n"), "2");
    fs::remove(INI);
    waitForNextSecond();
    EXPECT_EQ(reader.get("S", "m"), "2");   // a missing file changes nothing
}

TEST(ConfRegSave, withoutWriteThroughChangesStayInMemory)
{
    writeIni(TEXT);
    VendorRegistryC registry;
    EXPECT_EQ(registry.SetWriteThrough(false), 0);
    EXPECT_EQ(registry.set("S", "n", "memory"), 0);
    waitForNextSecond();
    EXPECT_EQ(registry.get("S", "n"), "memory");
    EXPECT_EQ(fileText(INI), TEXT);
    EXPECT_EQ(registry.SetWriteThrough(true), 0);
    EXPECT_TRUE(hasLine("n=memory"));
    EXPECT_EQ(registry.SetWriteThrough(false), 0);
    EXPECT_EQ(registry.set("S", "n", "lost"), 0);
    writeIni("[S]\nn=disk\n");
    waitForNextSecond();
    EXPECT_EQ(registry.get("S", "n"), "disk");
}

// Both made the section before they knew of each other; the later value wins, and stays over the next save.
TEST(ConfRegSave, joinsOneSectionThatTwoHaveMade)
{
    writeIni("");
    VendorRegistryC first;
    VendorRegistryC second;
    EXPECT_EQ(first.set("S", "k", "1"), 0);
    EXPECT_EQ(first.set("S", "own", "1"), 0);
    EXPECT_EQ(second.set("s", "K", "2"), 0);
    EXPECT_EQ(first.set("Other", "x", "1"), 0);
    waitForNextSecond();
    for (VendorRegistryC* const registry : {&first, &second}) {
        EXPECT_EQ(registry->get("S", "k"), "2");
        EXPECT_EQ(registry->get("S", "own"), "1");
        EXPECT_EQ(registry->get("Other", "x"), "1");
    }
}

TEST(ConfRegSave, losesNoChangeOfAnyProcessOrThread)
{
    const int WRITERS = 4;
    const int CHANGES = 25;
    const auto write = [](int writer) {
        VendorRegistryC registry;
        for (int i = 0; i < CHANGES; ++i) {
            const std::string name = "w" + std::to_string(writer) + "n" + std::to_string(i);
            if (registry.set("Shared", name.c_str(), name.c_str()) != 0) return 1;
        }
        return 0;
    };
    std::vector<int> children;
    for (int writer = 0; writer < WRITERS; ++writer) {
        children.push_back(forkChild());
        if (children.back() == 0) _exit(write(writer));
    }
    inThreads(2, [&](int i) { EXPECT_EQ(write(WRITERS + i), 0); });   // two registries in this process
    for (const int child : children) EXPECT_EQ(waitForChild(child), 0);
    for (int writer = 0; writer < WRITERS + 2; ++writer) {
        for (int i = 0; i < CHANGES; ++i) {
            const std::string name = "w" + std::to_string(writer) + "n" + std::to_string(i);
            EXPECT_TRUE(hasLine((name + "=" + name).c_str())) << name;
        }
    }
}

TEST(ConfRegSave, followsNoPlantedLinkAndKeepsModes)
{
    std::ofstream("precious") << "text";
    writeIni(TEXT);
    ASSERT_EQ(chmod(INI, 0640), 0);
    fs::create_symlink("precious", "v.ini.tmp");
    VendorRegistryC registry;
    EXPECT_EQ(registry.set("S", "n", "1"), 0);
    EXPECT_TRUE(hasLine("n=1"));
    struct stat info;
    ASSERT_EQ(stat(INI, &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);

    fs::create_symlink("precious", "v.ini.lck");
    EXPECT_EQ(registry.set("S", "n", "2"), 0);
    EXPECT_TRUE(hasLine("n=1"));
    EXPECT_EQ(registry.SetWriteThrough(true), TVXERR_REGISTRY_FAILURE);
    fs::remove("v.ini.lck");
    EXPECT_EQ(registry.SetWriteThrough(true), 0);
    EXPECT_TRUE(hasLine("n=2"));

    fs::rename(INI, "real.ini");
    fs::create_symlink("real.ini", INI);
    EXPECT_EQ(registry.set("S", "n", "3"), 0);
    EXPECT_FALSE(fs::is_symlink(INI));   // replaced, and what it led to is left
    EXPECT_NE(fileText("real.ini").find("n=2"), std::string::npos);
    EXPECT_EQ(fileText("precious"), "text");
}

TEST(ConfRegSave, makesTheFileAndItsDirectory)
{
    ConfRegistryIniC registry;
    EXPECT_EQ(registry.AddIniFile("a/b/c.ini", "HKCU", ""), 0);
    EXPECT_FALSE(fs::exists("a"));
    const mode_t before = umask(0027);
    EXPECT_EQ(registry.CreateString(HKEY_CURRENT_USER, "S", "n", "1"), 0);
    umask(before);
    EXPECT_EQ(fileText("a/b/c.ini"), "\n[S]\n\nn=1\n");
    struct stat info;
    ASSERT_EQ(stat("a/b/c.ini", &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
}

TEST(ConfRegSave, survivesAFullDisk)
{
    fs::create_directory("small");
    if (mount("tmpfs", "small", "tmpfs", 0, "size=64k") != 0) GTEST_SKIP() << "not permitted to mount";
    {
        ConfRegistryIniC registry;
        writeIni(TEXT, "small/v.ini");
        std::ofstream("small/filler") << std::string(56 * 1024, 'x');
        EXPECT_EQ(registry.AddIniFile("small/v.ini", "HKLM", ""), 0);
        const std::string large(16 * 1024, 'y');
        EXPECT_EQ(registry.CreateString(HKEY_LOCAL_MACHINE, "S", "n", large.c_str()), 0);
        EXPECT_EQ(fileText("small/v.ini"), TEXT);
        EXPECT_FALSE(fs::exists("small/v.ini.tmp"));
        fs::remove("small/filler");
        EXPECT_EQ(registry.CreateString(HKEY_LOCAL_MACHINE, "S", "m", "2"), 0);
        EXPECT_EQ(fileText("small/v.ini"), "; head\n[S]\nn=" + large + "\nkept=1\nm=2\n");
    }
    EXPECT_EQ(umount("small"), 0);
}

// Reporting reads the registry, on whatever thread it happens.
TEST(ConfRegSave, goesOnWhileOtherThreadsReportErrors)
{
    ConfRegistryI* const registry = getConfiguration(2)->registry();
    EXPECT_EQ(registry->AddIniFile(fs::absolute("threads.ini").c_str(), "HKCU", "Threads"), 0);
    inThreads(4, [&](int i) {
        for (int n = 0; n < 20; ++n) {
            if (i == 0) {
                EXPECT_EQ(registry->CreateDWord(HKEY_CURRENT_USER, "Threads\\S", "n", static_cast<unsigned long>(n)),
                          0);
                continue;
            }
            const AutoRollbackErrorCheckpointC checkpoint;
            Error(TVXERR_REGISTRY_FAILURE, "%S", ArgListC() << StringC("x"));
            unsigned long value = 0;
            const ErrorT result = registry->ReadDWord(HKEY_CURRENT_USER, "Threads\\S", "n", &value);
            EXPECT_TRUE(result == 0 || result == TVXERR_REGISTRY_NOT_FOUND);
        }
    });
    writeIni("", "gone-too.ini");
    EXPECT_EQ(registry->AddIniFile("gone-too.ini", "HKCU", "Threads"), 0);   // away from this test's directory
}

}   // namespace
