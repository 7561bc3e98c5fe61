#include "inspection.h"

#include "../support/wellformed.h"

#include "errorapi.h"
#include "tracesite.h"
#include "tvxcmn.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace {

// The agent's own numbers: set 500.
constexpr ErrorT AGENT_CANNOT_READ = 0xE1F40001L;
constexpr ErrorT AGENT_EMPTY = 0xE1F40002L;
constexpr ErrorT AGENT_CHANGED = 0xE1F40003L;

typedef std::unique_ptr<FILE, int (*)(FILE*)> FileT;

// Reads a whole file; 0, or the system's error, which has been reported.
ErrorT readFile(const std::string& path, std::string& content)
{
    const FileT file(std::fopen(path.c_str(), "rbe"), std::fclose);
    char piece[4096];
    while (file != nullptr) {
        const size_t count = std::fread(piece, 1, sizeof piece, file.get());
        TVX_TRACE("agent/file/read", "%u bytes", count);
        TVX_TRACE_COUNT("agent/file/read", static_cast<int>(count));
        content.append(piece, count);
        if (count < sizeof piece && std::ferror(file.get()) == 0) return 0;
        if (count < sizeof piece) break;
    }
    const ErrorT failure = ErrorErrno(errno);
    Error(AGENT_CANNOT_READ, "%S cannot be read", shownPath(path));
    return failure;
}

// The checksum of POSIX cksum and the size, as "4215202376 3".
std::string checksumOf(const std::string& content)
{
    uint32_t crc = 0;
    const auto take = [&crc](unsigned byte) {
        crc ^= byte << 24;
        for (int bit = 0; bit < 8; ++bit) crc = crc << 1 ^ (crc >> 31 != 0 ? 0x04C11DB7u : 0);
    };
    for (const char ch : content) take(static_cast<unsigned char>(ch));
    for (size_t size = content.size(); size != 0; size >>= 8) take(size & 0xFF);
    return std::to_string(~crc) + ' ' + std::to_string(content.size());
}

// Sets `sum` to the recorded checksum. Without a record there is nothing to compare, so that failure is
// taken back.
bool findRecord(const std::string& path, std::string& sum)
{
    const ErrorCheckpointC checkpoint;
    const ErrorT failure = readFile(path + ".sum", sum);
    if (failure == ErrorOfErrno(ENOENT)) {
        TVX_TRACE("agent/file/record", "%S has none", shownPath(path));
        checkpoint.rollback();
    }
    sum.erase(std::find(sum.begin(), sum.end(), '\n'), sum.end());
    return failure == 0;
}

void compareWithRecord(const std::string& path, const std::string& sum)
{
    std::string recorded;
    if (!findRecord(path, recorded) || recorded == sum) return;
    Error(AGENT_CHANGED,
          "\1\1{e}\1%1$S has changed\1Its checksum is %2$s, the record says %3$S"
          "\1Restore the file, or remove %1$S.sum",
          ArgList << shownPath(path) << sum.c_str() << shownPath(recorded));
}

// Reads the thread's errors back, one line for each part.
StringC reportLines()
{
    static const char* const SEVERITIES[] = {"note", "note", "note", "warning", "error", "fatal"};
    const ErrBufI& buffer = *getErrBuf(2);
    StringC lines;
    for (unsigned long i = 0; i < buffer.count(); ++i) {
        const ErrEntryI& entry = *buffer.get(i);
        lines +=
            StringC::format("  %s s%um%u: %S\n", ArgList << SEVERITIES[entry.severity()] << ErrorSetOf(entry.error())
                                                         << ErrorMessageOf(entry.error()) << entry.problem());
        for (const StringC& part : {entry.reason(), entry.solution()}) {
            if (!part.isEmpty()) lines += StringC::format("    %S\n", part);
        }
    }
    return lines;
}

}   // namespace

StringC shownPath(const std::string& path)
{
    const bool isUTF8 = wellFormedPrefix(path, StringC::CC_UTF8) == path.size();
    return {path.data(), path.size(), isUTF8 ? StringC::CC_UTF8 : StringC::CC_LATIN1};
}

FindingT inspect(const std::string& path)
{
    TVX_TRACE("agent/file", "inspecting %S", shownPath(path));
    TVX_TRACE_INDENT("agent/file");
    TVX_TRACE_TIMER("agent/file");

    FindingT finding = {StringC::format("%S:", shownPath(path)), ERR_SEV_NONE};
    std::string content;
    if (readFile(path, content) == 0) {
        const std::string sum = checksumOf(content);
        const long lines = std::count(content.begin(), content.end(), '\n');
        finding.text += StringC::format(" %d lines, checksum %s", ArgList << lines << sum.c_str());
        if (content.empty()) Error(AGENT_EMPTY, "{w} %S is empty", shownPath(path));
        compareWithRecord(path, sum);
    }
    finding.text += UCS4{'\n'};
    finding.text += reportLines();
    const StringC report = getErrBuf(2)->coalesce(finding.worst);
    if (!report.isEmpty()) TVX_TRACE("agent/report", "%S", report);
    return finding;
}
