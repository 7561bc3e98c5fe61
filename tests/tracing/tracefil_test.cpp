#include "tracing/tracefil.h"

#include "errornumbers.h"
#include "support/faults.h"
#include "support/helpers.h"
#include "support/system.h"
#include "tracing/tracecim.h"
#include "tracing/tracecreate.h"
#include "tracing/tracehelpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <thread>

namespace {

namespace fs = std::filesystem;

class TraceFile : public testing::Test {
protected:
    TraceFile()
    {
        setenv("TZ", "NPT-5:45", 1);
        tzset();
        controller.registerConsumer(&file, 0, 9);
        file.setFilePattern("out.trc");
    }
    ~TraceFile() override { controller.unregisterConsumer(&file); }

    long write(const char* format, ArgListC args = ArgListC(), int indent = 0, const char* traceClass = "net")
    {
        return file.message(traceClass, indent, format, std::move(args));
    }
    long load(const std::string& profile)
    {
        std::ofstream("profile") << profile;
        return file.loadProfile("profile");
    }
    bool isOn(const char* traceClass) { return netOf(controller, traceClass) != 0; }

    TraceControllerC controller;
    TraceConsumerFileC file{controller};
};

TEST_F(TraceFile, writesALineForEachMessage)
{
    errno = ENOENT;
    EXPECT_EQ(write("%d of %s: %!", ArgListC(3) << "\xC3\xA9"), 0);
    EXPECT_EQ(errno, ENOENT);
    write("two\nlines");
    write("%s", ArgListC(std::string(10000, 'x').c_str()));
    EXPECT_EQ(fileText("out.trc"),
              "3 of \xC3\xA9: No such file or directory\ntwo\nlines\n" + std::string(10000, 'x') + "\n");
}

TEST_F(TraceFile, indentsByTheDepthModuloItsLimit)
{
    for (const int indent : {0, 2, 18, -3}) write(".", ArgListC(), indent);
    file.setMaxIndent(0);
    write(".", ArgListC(), 18);
    EXPECT_EQ(fileText("out.trc"), ".\n  .\n  .\n.\n" + std::string(18, ' ') + ".\n");
}

TEST_F(TraceFile, prefixHasThePartsThatAreOn)
{
    const struct {
        std::vector<std::string> attributes;
        std::string line;
    } rows[] = {
        {{"show_class"}, "x"},
        {{"timestamp"}, R"([0-9]+\.[0-9]{4}: x)"},
        {{"timedeltas"}, R"(\+[0-9]+\.[0-9]{4}: x)"},
        {{"timestamp", "timedeltas", "show_class"}, R"([0-9]+\.[0-9]{4} \(\+[0-9]+\.[0-9]{4}\) \(net\): x)"},
        {{"timeofday"}, R"(20[0-9]{6}T[0-9]{10,11}: x)"},
        {{"show_process"}, "pid " + std::to_string(getpid()) + ": x"},
        {{"show_threads", "show_class"}, R"(thread 0x[0-9a-f]+ \(net\): x)"},
        {{"timedeltas", "show_process", "show_threads"}, R"(\+[0-9]+\.[0-9]{4}, pid [0-9]+, thread 0x[0-9a-f]+: x)"},
    };
    for (const auto& row : rows) {
        TraceConsumerFileC fresh(controller);
        fresh.setFilePattern("row.trc");
        for (const std::string& attribute : row.attributes) fresh.setAttr(attribute.c_str(), "Yes");
        for (int i = 0; i < 2; ++i) fresh.message("net", 0, "x", ArgListC());
        const std::vector<std::string> lines = splitText(fileText("row.trc"), '\n');
        ASSERT_EQ(lines.size(), 2u);
        for (const std::string& line : lines) EXPECT_THAT(line, testing::MatchesRegex(row.line));
        fs::remove("row.trc");
    }
}

TEST_F(TraceFile, attributesTakeNumbersAndTruthValues)
{
    const auto maxDetailAfter = [this](const char* value) {
        EXPECT_EQ(file.setAttr("MAX_detail", value), 0);
        int detail = 0;
        file.getMaxDetail(&detail);
        return detail;
    };
    EXPECT_EQ(maxDetailAfter("7 levels"), 7);
    EXPECT_EQ(maxDetailAfter("99999999999999999999"), INT_MAX);
    EXPECT_EQ(maxDetailAfter("-1"), INT_MAX);   // no number, ignored
    EXPECT_EQ(maxDetailAfter("tRUE"), 1);
    EXPECT_EQ(maxDetailAfter("n"), 0);
    EXPECT_EQ(maxDetailAfter(nullptr), 0);
    EXPECT_EQ(file.setAttr("show_process", "256"), 0);   // true, though its low byte is 0
    write("x");
    EXPECT_THAT(fileText("out.trc"), testing::StartsWith("pid "));
    EXPECT_EQ(file.setAttr("max_details", "1"), TVXERR_TRACE_UNKNOWN_ATTRIBUTE);
    EXPECT_EQ(file.setAttr(nullptr, "1"), TVXERR_TRACE_UNKNOWN_ATTRIBUTE);
}

TEST_F(TraceFile, profileHasSettingsClassesAndWildcards)
{
    const std::string tail(300, ' ');
    EXPECT_EQ(load("  show_process = yes # comment\r\n\n#+no\n+ net\n-net/quiet\nweb # x\n*/socket\n*socket\n"
                   "unknown = 1\n" +
                   tail + "+far\nlast"),
              0);
    for (const char* name : {"net", "net/a", "web", "last", "db/socket", "3,db/socket/x", "socket"}) {
        EXPECT_TRUE(isOn(name)) << name;
    }
    for (const char* name : {"net/quiet", "no", "far", "db", "db/sockets", "so/cket"}) EXPECT_FALSE(isOn(name)) << name;
    write("x");
    EXPECT_THAT(fileText("out.trc"), testing::StartsWith("pid "));
    EXPECT_EQ(file.loadProfile("missing"), ErrorOfErrno(ENOENT));
    EXPECT_EQ(file.loadProfile("."), ErrorOfErrno(EISDIR));
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);   // nobody writes to it
    EXPECT_EQ(file.loadProfile("fifo"), ErrorOfErrno(EINVAL));
}

TEST_F(TraceFile, linesWaitUntilThereAreEnough)
{
    file.setFlushFreq(3);
    for (int i = 0; i < 2; ++i) write("x");
    EXPECT_EQ(fileText("out.trc"), "");
    write("x");
    EXPECT_EQ(fileText("out.trc"), "x\nx\nx\n");
    write("y");
    file.setFilePattern("next.trc");   // closes the first file
    EXPECT_EQ(fileText("out.trc"), "x\nx\nx\ny\n");
    write("z");
    file.beginExit();
    write("z");
    EXPECT_EQ(fileText("next.trc"), "z\nz\n");

    file.setFilePattern("many.trc");
    file.setFlushFreq(INT_MAX);
    for (int i = 0; i < 10000; ++i) write("%d", ArgListC(i));
    EXPECT_GT(fs::file_size("many.trc"), 10000u);   // not all of it is kept in memory
}

TEST_F(TraceFile, countersAndTimersShowWhenTheyAreOn)
{
    TraceValuesT& values = valuesOf(controller, "net");
    values.count = 7;
    file.valueChange("net", 1);
    file.enableCounters(true);
    file.valueChange("net", 1);
    values.total = 12000034;
    file.valueChange("net", 1);
    file.enableRealTimers(true);
    file.valueChange("net", 1);
    EXPECT_EQ(fileText("out.trc"), " counter net now 7\n timer net interval 7, total 12.000034\n");
}

// ---- the file's name and what stands under it ---------------------------------------------------------

TEST_F(TraceFile, patternGivesTheName)
{
    std::tm local = {};
    local.tm_year = 121;
    local.tm_mon = 5;
    local.tm_mday = 7;
    local.tm_hour = 13;
    local.tm_min = 5;
    local.tm_sec = 9;
    const struct {
        const char* pattern;
        const char* first;
        const char* second;
    } rows[] = {
        {"/tmp/%p%t.trc", "/tmp/4242130509.trc", "/tmp/4242130509.trc"},
        {"%d%_u", "20210607", "20210607_1"},
        {"a%u%_p%", "a4242", "a1_4242"},
        {"%%x%q%__y%_", "%xq_y", "%xq__y_"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(traceFileName(row.pattern, 0, 4242, local), row.first);
        EXPECT_EQ(traceFileName(row.pattern, 1, 4242, local), row.second);
    }
}

TEST_F(TraceFile, numberedNameNeverMeetsAFileThatIsThere)
{
    std::ofstream("out.log") << "mine";
    file.setFilePattern("out%_u.log");
    write("x");
    EXPECT_EQ(fileText("out.log"), "mine");
    EXPECT_EQ(fileText("out_1.log"), "x\n");
    file.setFilePattern("out_1.log");
    write("y");
    EXPECT_EQ(fileText("out_1.log"), "x\ny\n");
}

TEST_F(TraceFile, failureToOpenIsReportedAndTriedAgain)
{
    const size_t descriptors = openDescriptors();
    file.setFilePattern("missing/%u.trc");
    EXPECT_EQ(write("x"), ErrorOfErrno(ENOENT));
    EXPECT_EQ(openDescriptors(), descriptors);
    fs::create_directory("missing");
    EXPECT_EQ(write("y"), 0);
    EXPECT_EQ(fileText("missing/.trc"), "y\n");

    file.setFilePattern("same.trc");
    const FaultC fault("openat", EACCES, 0, 1000);
    EXPECT_EQ(write("x"), ErrorOfErrno(EACCES));
    EXPECT_EQ(fault.calls(), 1);
}

TEST_F(TraceFile, fullDiskLosesLinesAndNothingElse)
{
    file.setFilePattern("/dev/full");
    EXPECT_EQ(write("x"), 0);
    file.setFilePattern("out.trc");
    {
        const FaultC fault("write", ENOSPC);
        EXPECT_EQ(write("lost"), 0);
    }
    {
        const FaultC half("write", 0);
        EXPECT_EQ(write("kept"), 0);
    }
    const FaultC interrupted("write", EINTR);
    EXPECT_EQ(write("too"), 0);
    EXPECT_EQ(fileText("out.trc"), "kept\ntoo\n");
    {
        const FaultC half("write", 0);
        const FaultC full("write", ENOSPC, 1);
        EXPECT_EQ(write("12345678"), 0);
    }
    EXPECT_EQ(write("whole"), 0);
    EXPECT_EQ(fileText("out.trc"), "kept\ntoo\n1234\nwhole\n");
}

TEST_F(TraceFile, whatSomebodyElsePutUnderTheNameIsRefusedWhereEverybodyMay)
{
    fs::create_directory("public");
    std::ofstream("victim") << "old\n";
    fs::create_symlink("../victim", "public/symbolic");
    fs::create_hard_link("victim", "public/hard");
    ASSERT_EQ(mkfifo("public/fifo", 0666), 0);
    for (const mode_t mode : {01777U, 0777U}) {
        ASSERT_EQ(chmod("public", mode), 0);
        for (const char* name : {"symbolic", "hard"}) {
            file.setFilePattern((std::string("public/") + name).c_str());
            EXPECT_EQ(write("x"), ErrorOfErrno(ELOOP)) << name;
        }
        file.setFilePattern("public/fifo");   // nobody reads it
        EXPECT_EQ(write("x"), ErrorOfErrno(ENXIO));
        const FdOwnerC reader(open("public/fifo", O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        EXPECT_EQ(write("x"), ErrorOfErrno(ELOOP));
    }
    file.setFilePattern("public/own");
    EXPECT_EQ(write("x"), 0);
    EXPECT_EQ(fileText("victim"), "old\n");

    ASSERT_EQ(chmod("public", 0755), 0);   // only we may: whatever is there is meant
    file.setFilePattern("public/symbolic");
    EXPECT_EQ(write("x"), 0);
    EXPECT_EQ(fileText("victim"), "old\nx\n");
}

TEST_F(TraceFile, linesOfSeveralProcessesStayWhole)
{
    const int PROCESSES = 4;
    const int LINES = 100;
    std::vector<int> children;
    for (int p = 0; p < PROCESSES; ++p) {
        const int child = forkChild();
        if (child == 0) {
            const std::string text(5000, static_cast<char>('a' + p));
            for (int i = 0; i < LINES; ++i) write("%s", ArgListC(text.c_str()));
            _exit(0);
        }
        children.push_back(child);
    }
    for (const int child : children) EXPECT_EQ(waitForChild(child), 0);
    const std::vector<std::string> lines = splitText(fileText("out.trc"), '\n');
    EXPECT_EQ(lines.size(), size_t{PROCESSES * LINES});
    for (const std::string& line : lines) EXPECT_EQ(line, std::string(5000, line[0]));
}

TEST_F(TraceFile, settingsMayChangeWhileOthersTrace)
{
    controller.enable(&file, "net");
    inThreads(4, [this](int thread) {
        for (int i = 0; i < 200; ++i) {
            if (thread == 0) file.setFilePattern(i % 2 == 0 ? "a.trc" : "b.trc");
            if (thread == 1) file.setAttr(i % 2 == 0 ? "timestamp" : "timeofday", "yes");
            controller.deliver(1, "net", 0, "%d", ArgListC(i));
        }
    });
    file.setFilePattern("out.trc");
    EXPECT_EQ(splitText(fileText("a.trc") + fileText("b.trc") + fileText("out.trc"), '\n').size(), 800u);
}

}   // namespace
