// Group "tracing": what a trace point costs, off and on, beside the loggers of other libraries.
//
// The limit of a point that is off is a loop with one load and one branch; that of a line in a file is one
// write(2) of the ready line. Lines go to a file in the current directory, which is removed at the end.

#include "traceconsumer.h"
#include "tracecontroller.h"
#include "tracer.h"
#include "tracesite.h"
#include "tvxcmn.h"

#include "support/bench.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <glog/logging.h>
#include <memory>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <string>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// The values of all messages. Nothing about them is known when the code is compiled: see keep().
struct ValuesT {
    const char* host = "server-17.example.net";
    int port = 8443;
    int size = 1460;
};
ValuesT v;

const char READY[] = "1460 bytes read from server-17.example.net:8443\n";

// A directory for the lines, of which a row keeps only the first: files do not grow while the clock runs.
class DirectoryC {
public:
    DirectoryC()
    {
        std::string name = (fs::temp_directory_path() / "tvxcmn-bench-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) std::abort();
        m_path = name;
    }
    ~DirectoryC()
    {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    std::string file(const char* name) const { return (m_path / name).string(); }

private:
    fs::path m_path;
};

const DirectoryC& directory()
{
    static const DirectoryC made;
    return made;
}

// A row of `line()` that writes to `file`; the digest is that of the first line's text, with the last 48
// bytes of which all loggers end it.
template <class LineT>
void lineRow(
    const std::string& workload, const std::string& library, const std::string& file, LineT line,
    void (*flush)() = [] {})
{
    addVerifiedRow(workload, library, items(1), [=](bool whole) {
        keep(v);
        if (!whole) {
            line();
            return DigestT{1};
        }
        std::error_code ignored;
        if (fs::exists(file)) fs::resize_file(file, 0, ignored);
        line();
        flush();
        std::ifstream in(file);
        std::string text((std::istreambuf_iterator<char>(in)), {});
        return digestOf(text.substr(text.size() < sizeof READY ? 0 : text.size() - (sizeof READY - 1)));
    });
}

template <class LineT>
void pointRow(const std::string& library, LineT line)
{
    addRow("point_off", library, items(1), [=] {
        keep(v);
        line();
        return DigestT{1};
    });
}

void disabledRows()
{
    pointRow("ours", [] { TVX_TRACE("off", "%d bytes read from %s:%d", v.size, v.host, v.port); });
    static unsigned mask = 0;
    static const unsigned* const net = &mask;
    pointRow("limit", [] {
        if (__builtin_expect(__atomic_load_n(net, __ATOMIC_RELAXED) != 0, 0)) std::puts(v.host);
    });
    static const std::shared_ptr<spdlog::logger> logger =
        spdlog::basic_logger_mt("off", directory().file("spdlog_off"), true);
    pointRow("spdlog", [] { logger->debug("{} bytes read from {}:{}", v.size, v.host, v.port); });
    pointRow("glog", [] { VLOG(1) << v.size << " bytes read from " << v.host << ':' << v.port; });
}

std::shared_ptr<spdlog::logger> fileLogger(const char* name)
{
    auto logger = spdlog::basic_logger_mt(name, directory().file(name), true);
    logger->set_pattern("%v");
    return logger;
}

void ourRow(const std::string& workload, const char* pattern, int flushFreq)
{
    TraceDefaultConsumerI* const consumer = getTracer(2)->getDefaultConsumer();
    getTraceController(2)->enable(consumer, "on");
    const std::string file = directory().file(pattern);
    const auto line = [=] { TVX_TRACE("on", "%d bytes read from %s:%d", v.size, v.host, v.port); };
    addVerifiedRow(workload, "ours", items(1), [=](bool whole) {
        keep(v);
        if (!whole) {
            line();
            return DigestT{1};
        }
        std::error_code ignored;
        fs::remove(file, ignored);
        consumer->setFlushFreq(flushFreq);
        consumer->setFilePattern(file.c_str());
        line();
        consumer->setFilePattern(file.c_str());   // writes what waits
        std::ifstream in(file);
        return digestOf(std::string((std::istreambuf_iterator<char>(in)), {}));
    });
}

// Each line is in the file when the call returns.
void flushedRows()
{
    const std::string w = "line_flushed";
    ourRow(w, "ours_1", 1);
    const std::string limitFile = directory().file("limit");
    static const int fd = ::open(limitFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    lineRow(w, "limit", limitFile, [] {
        if (::write(fd, READY, sizeof READY - 1) < 0) std::abort();
    });
    const std::string stdioFile = directory().file("stdio_1");
    static std::FILE* const file = std::fopen(stdioFile.c_str(), "ae");
    lineRow(w, "libc fprintf", stdioFile, [] {
        std::fprintf(file, "%d bytes read from %s:%d\n", v.size, v.host, v.port);
        std::fflush(file);
    });
    static const std::shared_ptr<spdlog::logger> logger = fileLogger("spdlog_1");
    logger->flush_on(spdlog::level::info);
    lineRow(w, "spdlog", directory().file("spdlog_1"),
            [] { logger->info("{} bytes read from {}:{}", v.size, v.host, v.port); });
    // Its own prefix cannot be turned off, and the name of its file is its own: no digest.
    addRow(w, "glog", items(1), [] {
        FLAGS_logbuflevel = -1;
        LOG(INFO) << v.size << " bytes read from " << v.host << ':' << v.port;
        return UNCHECKED;
    });
}

// Lines are written in batches.
void batchedRows()
{
    const std::string w = "line_batched";
    ourRow(w, "ours_100", 100);
    const std::string stdioFile = directory().file("stdio_100");
    static std::FILE* const file = std::fopen(stdioFile.c_str(), "ae");
    lineRow(
        w, "libc fprintf", stdioFile, [] { std::fprintf(file, "%d bytes read from %s:%d\n", v.size, v.host, v.port); },
        [] { std::fflush(file); });
    static const std::shared_ptr<spdlog::logger> logger = fileLogger("spdlog_100");
    lineRow(
        w, "spdlog", directory().file("spdlog_100"),
        [] { logger->info("{} bytes read from {}:{}", v.size, v.host, v.port); }, [] { logger->flush(); });
    addRow(w, "glog", items(1), [] {
        FLAGS_logbuflevel = 0;
        LOG(INFO) << v.size << " bytes read from " << v.host << ':' << v.port;
        return UNCHECKED;
    });
}

}   // namespace

void registerRows()
{
    FLAGS_logtostderr = false;
    FLAGS_stderrthreshold = 3;
    static const std::string logs = directory().file("");
    FLAGS_log_dir = logs;
    google::InitGoogleLogging("tracing_bench");
    disabledRows();
    flushedRows();
    batchedRows();
}
