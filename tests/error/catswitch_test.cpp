#include "configuration.h"
#include "confregistry.h"
#include "errcatalog.h"
#include "error/catalogfiles.h"
#include "errorapi.h"
#include "support/allocations.h"
#include "support/faults.h"
#include "support/helpers.h"
#include "support/system.h"
#include "tracer.h"
#include "tracing/tracehelpers.h"
#include "tvxcmn.h"

#include <atomic>
#include <cerrno>
#include <clocale>
#include <cstring>
#include <filesystem>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

const ErrorT DISK = 0xE1B20005L;
const char MODULE_FILE[] = "allcat.cat";   // found in the current directory while the install directory is unknown

// The text of a number, behind its severity.
std::string message(ErrorT err, const char* def_str = "{i} default")
{
    ErrSevT sev = ERR_SEV_NONE;
    const StringC text = ErrorString(sev, err, def_str);
    return std::to_string(sev) + text.utf8();
}

// What concerns the module's catalog runs in a process that has not looked for one yet: whether `body` holds there.
// No test around this may report anything before.
#define EXPECT_IN_NEW_PROCESS(body) EXPECT_EXIT(_exit((body) ? 0 : 1), testing::ExitedWithCode(0), "")

class CatalogSwitchTest : public testing::Test {
protected:
    ~CatalogSwitchTest() override
    {
        ErrSetCat(nullptr);
        getErrBuf(2)->reset();
    }
};

TEST_F(CatalogSwitchTest, takesTheProcessesTextBeforeTheDefault)
{
    writeFile("my.cat", catalogBytes({{0, ENOENT, "not there"},
                                      {0x1B2, 5, "{w} %d from the file"},
                                      {0x1B2, 6, "{#}"},
                                      {0x1B2, 7, "{#}never shown"}}));
    EXPECT_EQ(message(DISK), "2default");
    EXPECT_EQ(message(ErrorOfErrno(ENOENT)), std::string("4") + std::strerror(ENOENT));
    EXPECT_EQ(ErrSetCat("my.cat"), 0);
    EXPECT_EQ(message(DISK), "3%d from the file");
    EXPECT_EQ(message(DISK & ~(1L << 29)), "2default");
    EXPECT_EQ(message(ErrorOfErrno(ENOENT)), "4not there");
    EXPECT_EQ(message(ErrorOfErrno(EACCES)), std::string("4") + std::strerror(EACCES));
    EXPECT_EQ(message(DISK + 1), "2default");   // an empty text silences nobody
    EXPECT_EQ(message(DISK + 1, "plain"), "4plain");
    EXPECT_EQ(message(DISK + 1, nullptr), "4");

    Error(DISK, "{i} %d default", ArgListC(3));
    Error(DISK + 2, "{i} default");
    ASSERT_EQ(getErrBuf(2)->count(), 1U);
    EXPECT_STREQ(getErrBuf(2)->get(0)->message().utf8(), "3 from the file");

    ErrGetCat()->setUserLevel("A");
    EXPECT_EQ(ErrSetModuleCat("other.cat"), 0);
    EXPECT_EQ(message(DISK), "3%d from the file");
    ErrSetCat("");
    EXPECT_EQ(message(DISK), "2default");
}

// What a caller passes is what its own text says; a catalog may be of another release, or from somebody else.
TEST_F(CatalogSwitchTest, readsAVariableArgumentListAsTheCallersTextSays)
{
    writeFile("my.cat", catalogBytes({{0x1B2, 5, "from the file: %1$d"}}));
    ErrSetCat("my.cat");
    const auto reported = [](const char* def_str, ...) {
        va_list params;
        va_start(params, def_str);
        ErrorVA(DISK, def_str, params);
        va_end(params);
        const ErrBufI& buffer = *getErrBuf(2);
        return std::string(buffer.get(buffer.count() - 1)->message().utf8());
    };
    EXPECT_EQ(reported("%d %s", 7, "x"), "from the file: 7");
    EXPECT_EQ(reported("", 8), "from the file: 8");
}

TEST_F(CatalogSwitchTest, followsTheLocaleOfTheProcess)
{
    writeFile("my.cat", catalogBytes({{0x1B2, 5, "in C"}}));
    writeFile("utf8.cat", catalogBytes({{0x1B2, 5, "in C.UTF-8"}}));
    ErrSetCat("my.cat");
    std::setlocale(LC_ALL, "C.UTF-8");
    EXPECT_EQ(message(DISK), "2default");
    ErrSetCat("utf8.cat");
    for (int round = 0; round < 2; ++round) {
        std::setlocale(LC_ALL, "C");
        EXPECT_EQ(message(DISK), "4in C");
        std::setlocale(LC_ALL, "C.UTF-8");
        EXPECT_EQ(message(DISK), "4in C.UTF-8");
    }
    ErrSetCat(nullptr);
    // More names, and longer ones, than are remembered.
    std::setlocale(LC_ALL, "C");
    for (const int category : {LC_CTYPE, LC_NUMERIC, LC_TIME, LC_COLLATE, LC_MONETARY, LC_MESSAGES}) {
        std::setlocale(category, "C.UTF-8");
        EXPECT_EQ(message(DISK), "2default");
    }
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(message(DISK), "4in C");
}

// One that reports for each message it gets, which then has a text from a catalog.
TEST_F(CatalogSwitchTest, tracesWhereATextIsFrom)
{
    writeFile("my.cat", catalogBytes({{0x1B2, 5, "{w}a\1b"}}));
    TraceControllerI& controller = *getTraceController(2);
    RecordingConsumerC consumer;
    controller.registerConsumer(&consumer, 0, 9);
    controller.enable(&consumer, "Error/Catalog");
    consumer.onMessage = [](const char*) { Error(DISK, "nested"); };
    ErrSetCat("my.cat");
    EXPECT_EQ(message(DISK), "3a\1b");
    EXPECT_EQ(message(DISK + 1), "2default");
    controller.unregisterConsumer(&consumer);
    EXPECT_THAT(consumer.messages, ElementsAre("0Error/Catalog/Open@0:Setting process message catalog to my.cat",
                                               "Error/Catalog/Fetch@0:Message s434m5 from process catalog: a\1b"));
    EXPECT_EQ(getErrBuf(2)->count(), 2U);
}

TEST_F(CatalogSwitchTest, keepsErrnoAndAsksNoSystemTwice)
{
    message(DISK);
    errno = EXDEV;
    const FaultC fault("open", EMFILE, 0, 1000);
    Error(DISK, "%!", ArgListNull);
    EXPECT_STREQ(getErrBuf(2)->get(0)->message().utf8(), std::strerror(EXDEV));
    EXPECT_EQ(errno, EXDEV);
    EXPECT_EQ(fault.calls(), 0);
}

TEST_F(CatalogSwitchTest, threadsFindTextsWhileTheCatalogIsReplaced)
{
    writeFile("my.cat", catalogBytes({{0x1B2, 5, "text"}}));
    ErrSetCat("my.cat");
    inThreads(8, [](int thread) {
        for (int i = 0; i < 2000; ++i) {
            if (thread == 0) {
                ErrSetCat("my.cat");
                ErrGetCat()->setUserLevel("A");
            } else {
                EXPECT_EQ(message(DISK), "4text");
            }
        }
    });
}

TEST(ModuleCatalogDeathTest, isAskedFirst)
{
    writeFile(MODULE_FILE, catalogBytes({{0x1B2, 5, "{f} the module's"}, {0x1B2, 6, ""}}));
    writeFile("my.cat", catalogBytes({{0x1B2, 5, "the process's"}, {0x1B2, 6, "the process's"}}));
    EXPECT_IN_NEW_PROCESS(ErrSetCat("my.cat") == 0 && message(DISK) == "5the module's" &&
                          message(DISK + 1) == "4the process's" && message(DISK + 2) == "2default");
}

bool isTracedAndReplacedForGood()
{
    RecordingConsumerC consumer;
    getTraceController(2)->registerConsumer(&consumer, 0, 9);
    getTraceController(2)->enable(&consumer, "Error/Catalog");
    const bool isTraced = ErrDisableModuleCat() == 0 && consumer.messages.empty() && message(DISK) == "2default";
    ErrDisableModuleCat();
    const std::string line = "0Error/Catalog/Open@0:Replaced previous catalog with empty one";
    return isTraced && consumer.messages == std::vector<std::string>{line};
}

bool isReplaced()
{
    const size_t before = openDescriptors();
    const bool wasThere = message(DISK) == "4the module's" && openDescriptors() == before + 1;
    ErrDisableModuleCat();
    return wasThere && message(DISK) == "2default" && openDescriptors() == before;
}

TEST(ModuleCatalogDeathTest, isReplacedByAnEmptyOne)
{
    writeFile(MODULE_FILE, catalogBytes({{0x1B2, 5, "the module's"}}));
    EXPECT_IN_NEW_PROCESS(isTracedAndReplacedForGood());
    EXPECT_IN_NEW_PROCESS(isReplaced());
}

void install()
{
    std::filesystem::create_directory("lib");
    writeFile("lib/allcat.cat", catalogBytes({{0x1B2, 5, "the installed one's"}}));
    writeFile("install.ini", "[Corvantage]\nInstallDir=" + std::filesystem::current_path().string() + "\n");
}

bool isInstalled()
{
    return getConfiguration(2)->registry()->AddIniFile("install.ini", "HKLM", "SOFTWARE\\Corvantage Corp") == 0;
}

// The text in a consumer of the tracer, who must not wait for the registry.
std::string messageInDelivery()
{
    RecordingConsumerC consumer;
    std::string inDelivery;
    consumer.onMessage = [&inDelivery](const char*) { inDelivery = message(DISK); };
    getTraceController(2)->registerConsumer(&consumer, 0, 9);
    getTraceController(2)->enable(&consumer, "some");
    const unsigned* net = nullptr;
    getTracer(2)->trace("some", &net, "x", ArgListC());
    getTraceController(2)->unregisterConsumer(&consumer);
    return inDelivery;
}

bool isFoundOnceTheDirectoryIsKnown()
{
    const bool wasUnknown = message(DISK) == "2default" && GetRegInstallPath().isEmpty() && isInstalled();
    usleep(1100000);
    const std::string inDelivery = messageInDelivery();
    usleep(1100000);
    return wasUnknown && inDelivery == "2default" && message(DISK) == "4the installed one's";
}

TEST(ModuleCatalogDeathTest, isFoundOnceTheInstallDirectoryIsKnown)
{
    install();
    EXPECT_IN_NEW_PROCESS(isFoundOnceTheDirectoryIsKnown());
    writeFile(MODULE_FILE, catalogBytes({{0x1B2, 5, "another one's"}}));
    EXPECT_IN_NEW_PROCESS(isInstalled() && messageInDelivery() == "2default" &&
                          message(DISK) == "4the installed one's");
}

// The file with the install directory cannot be opened: reporting that asks for the directory again.
bool isReportedWithoutTheDirectory()
{
    const size_t before = openDescriptors();
    {
        const FaultC fault("open", EACCES, 0, 1000);
        if (!isInstalled() || Error(DISK, "{i} default") != DISK || message(DISK) != "2default") return false;
        if (fault.calls() > 10 || openDescriptors() > before + 1) return false;
    }
    usleep(1100000);
    return message(DISK) == "4the installed one's" && openDescriptors() <= before + 1;
}

TEST(ModuleCatalogDeathTest, isDoneWithoutWhileTheInstallDirectoryCannotBeRead)
{
    install();
    EXPECT_IN_NEW_PROCESS(isReportedWithoutTheDirectory());
}

// Every thread has the right text from the start, and only one file stays open.
bool isSharedByThreads()
{
    const size_t before = openDescriptors();
    std::atomic<int> right{0};
    inThreads(16, [&right](int) { right += message(DISK) == "4the module's"; });
    return right == 16 && openDescriptors() == before + 1;
}

TEST(ModuleCatalogDeathTest, isOpenedOnceForAllThreads)
{
    writeFile(MODULE_FILE, catalogBytes({{0x1B2, 5, "the module's"}}));
    EXPECT_IN_NEW_PROCESS(isSharedByThreads());
}

// The child of a fork replaces what the parent's other threads are reading. One of each may stay.
int replaceInChild()
{
    const size_t before = openDescriptors();
    for (int i = 0; i < 20; ++i) ErrSetCat("my.cat");
    ErrDisableModuleCat();
    return message(DISK) == "4the process's" && openDescriptors() <= before + 1 ? 0 : 1;
}

bool isReadableInAChild()
{
    ErrSetCat("my.cat");
    std::atomic<bool> isDone{false};
    bool isRight = message(DISK) == "4the module's" && message(DISK + 1) == "4the process's";
    inThreads(4, [&](int thread) {
        if (thread > 0) {
            while (!isDone) message(DISK + thread % 2);
            return;
        }
        for (int i = 0; i < 50; ++i) isRight = isRight && inChild(replaceInChild) == 0;
        isDone = true;
    });
    return isRight;
}

TEST(ModuleCatalogDeathTest, isReadableInTheChildOfAFork)
{
    if (!countsAllocations()) GTEST_SKIP() << "the sanitizer's heap does not survive a fork among threads";
    writeFile(MODULE_FILE, catalogBytes({{0x1B2, 5, "the module's"}}));
    writeFile("my.cat", catalogBytes({{0x1B2, 5, "the process's"}, {0x1B2, 6, "the process's"}}));
    EXPECT_IN_NEW_PROCESS(isReadableInAChild());
}

}   // namespace
