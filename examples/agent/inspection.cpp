#include "inspection.h"

#include "agent_msg.h"

#include "errorapi.h"
#include "fileservice.h"
#include "tracesite.h"

#include <cstdint>
#include <memory>
#include <string>

namespace {

// Whether the whole file could be read. The library reports why not.
bool readFile(const StringC& path, std::string& content)
{
    const std::unique_ptr<IOStreamC> file(FileService()->openFile(
        path, FileStreamC::FMODE_OPEN, FileStreamC::FACCESS_READ, FileStreamC::SHARE_READWRITE, false));
    if (file == nullptr) return false;
    char piece[4096];
    long count;
    while ((count = file->read(piece, sizeof piece)) > 0) {
        TVX_TRACE("agent/file/read", "%d bytes", count);
        TVX_TRACE_COUNT("agent/file/read", static_cast<int>(count));
        content.append(piece, static_cast<size_t>(count));
    }
    if (count < 0) Error(AGENT_CANNOT_READ, "%S cannot be read", ArgList << path);
    return count == 0;
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

}   // namespace

bool inspect(FileRecordT& file)
{
    TVX_TRACE("agent/file", "inspecting %S", file.path);
    TVX_TRACE_INDENT("agent/file");
    TVX_TRACE_TIMER("agent/file");

    std::string content;
    if (!readFile(file.path, content)) return false;
    if (content.empty()) Error(AGENT_EMPTY, "{w} %S is empty", ArgList << file.path);
    const StringC sum = checksumOf(content).c_str();
    if (file.sum.isEmpty()) {
        file.sum = sum;
        return true;
    }
    if (file.sum != sum) Error(AGENT_CHANGED, "%1$S has changed", ArgList << file.path << sum << file.sum);
    return false;
}
