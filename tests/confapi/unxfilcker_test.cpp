// The lock between processes, with real processes.

#include "confapi/impl/unxfilcker.h"
#include "support/faults.h"
#include "support/helpers.h"
#include "support/system.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

namespace fs = std::filesystem;

const char LOCK[] = "x.lck";

double secondsOf(const std::function<void()>& body)
{
    const auto begin = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// A child that holds the lock, for that long or until it is killed.
class HolderC {
public:
    explicit HolderC(useconds_t microseconds)
    {
        int ends[2];
        if (pipe(ends) != 0) abort();
        m_pid = forkChild();
        if (m_pid == 0) {
            UnxFilckerC lock{FileNameC(LOCK)};
            const char result = lock.lockFile() == 0 ? 'y' : 'n';
            if (write(ends[1], &result, 1) != 1) _exit(1);
            usleep(microseconds);
            lock.releaseFile();
            _exit(0);
        }
        char result = 0;
        EXPECT_EQ(read(ends[0], &result, 1), 1);
        EXPECT_EQ(result, 'y');
        close(ends[0]);
        close(ends[1]);
    }
    ~HolderC() { end(); }
    void end()
    {
        if (m_pid == 0) return;
        kill(m_pid, SIGKILL);
        waitForChild(m_pid);
        m_pid = 0;
    }

private:
    pid_t m_pid;
};

TEST(UnxFilcker, letsOneProcessInAtATime)
{
    const int PROCESSES = 4;
    const int ROUNDS = 60;
    std::ofstream("count") << 0;
    std::vector<int> children;
    for (int i = 0; i < PROCESSES; ++i) {
        children.push_back(forkChild());
        if (children.back() != 0) continue;
        UnxFilckerC lock{FileNameC(LOCK)};
        for (int n = 0; n < ROUNDS; ++n) {
            if (lock.lockFile(20) != 0) _exit(1);
            const int count = std::stoi(fileText("count"));
            std::ofstream("count") << count + 1;
            if (!lock.releaseFile()) _exit(1);
        }
        _exit(0);
    }
    for (const int child : children) EXPECT_EQ(waitForChild(child), 0);
    EXPECT_EQ(fileText("count"), std::to_string(PROCESSES * ROUNDS));
    EXPECT_FALSE(fs::exists(LOCK));
}

TEST(UnxFilcker, waitsForTheHolderAndNotMuchLonger)
{
    UnxFilckerC lock{FileNameC(LOCK)};
    {
        const HolderC holder(300000);
        EXPECT_EQ(lock.lockFile(), UnxFilckerC::BUSY);
        EXPECT_FALSE(lock.isLocked());
        EXPECT_LT(secondsOf([&] { EXPECT_EQ(lock.lockFile(20), 0); }), 5);   // 0.3 on a machine with nothing else to do
        EXPECT_TRUE(lock.releaseFile());
    }
    HolderC holder(100000000);
    EXPECT_GE(secondsOf([&] { EXPECT_EQ(lock.lockFile(1), UnxFilckerC::BUSY); }), 1);
    EXPECT_TRUE(errno == EAGAIN || errno == EACCES);
    holder.end();
    EXPECT_TRUE(fs::exists(LOCK));   // what a killed holder leaves
    EXPECT_EQ(lock.lockFile(), 0);
}

TEST(UnxFilcker, leavesWhatWasPlantedAlone)
{
    std::ofstream("precious") << "text";
    ASSERT_EQ(chmod("precious", 0600), 0);
    fs::create_symlink("precious", "symbolic.lck");
    fs::create_hard_link("precious", "hard.lck");
    ASSERT_EQ(mkfifo("pipe.lck", 0600), 0);

    for (const char* const name : {"symbolic.lck", "pipe.lck", "missing/x.lck"}) {
        UnxFilckerC lock{FileNameC(name)};
        EXPECT_EQ(lock.lockFile(20), UnxFilckerC::CANNOT_OPEN) << name;
    }
    UnxFilckerC lock{FileNameC("hard.lck")};
    lock.shareAs(0644);
    EXPECT_EQ(lock.lockFile(), 0);
    lock.releaseFile();
    struct stat info;
    ASSERT_EQ(stat("precious", &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    EXPECT_EQ(fileText("precious"), "text");
}

TEST(UnxFilcker, isSharedWithWhoMayUseTheFileItself)
{
    const mode_t before = umask(0077);
    UnxFilckerC lock{FileNameC(LOCK)};
    lock.shareAs(0466);
    EXPECT_EQ(lock.lockFile(), 0);
    umask(before);
    struct stat info;
    ASSERT_EQ(stat(LOCK, &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0666u);
}

TEST(UnxFilcker, givesUpWhenTheSystemFailsAndNothingIsLeftOpen)
{
    UnxFilckerC lock{FileNameC(LOCK)};
    const size_t open = openDescriptors();
    for (const char* const call : {"open", "fcntl", "fstat", "stat"}) {
        const FaultC fault(call, EIO);
        EXPECT_NE(lock.lockFile(), 0) << call;
        EXPECT_EQ(openDescriptors(), open) << call;
    }
    {
        const FaultC removed("stat", [] { fs::remove(LOCK); });   // by the holder before
        EXPECT_EQ(lock.lockFile(), UnxFilckerC::BUSY);
        EXPECT_EQ(errno, EAGAIN);
    }
    {
        const FaultC interrupted("open", EINTR, 0, 3);
        const FaultC interruptedToo("fcntl", EINTR, 0, 3);
        EXPECT_EQ(lock.lockFile(), 0);
    }
    const FaultC fault("close", EIO);
    EXPECT_FALSE(lock.releaseFile());
    EXPECT_EQ(lock.lockFile(), 0);
}

}   // namespace
