// What a message text says about itself, and how an entry takes it apart, against a plain reading of the forms.

#include "error/api/selectstyle.h"
#include "errorapi.h"
#include "tvxcmn.h"

#include "fuzz.h"

#include <cctype>
#include <vector>

namespace {

struct ReadingT {
    ErrSevT sev = ERR_SEV_ERROR;
    std::string message;
};

std::vector<std::string> split(std::string_view text)
{
    std::vector<std::string> fields(1);
    for (const char ch : text) {
        if (ch == '\1') {
            fields.emplace_back();
        } else {
            fields.back() += ch;
        }
    }
    return fields;
}

ErrSevT severityOf(std::string_view mark)
{
    const std::string_view letters = "#miwef";
    ErrSevT sev = ERR_SEV_ERROR;
    for (size_t i = 1; i < mark.size() && mark[i] != '}'; ++i) {
        const size_t place = letters.find(mark[i]);
        if (place != std::string_view::npos && !std::isupper(static_cast<unsigned char>(mark[i - 1])))
            sev = static_cast<ErrSevT>(place);
    }
    return sev;
}

ReadingT readVariants(std::string_view list)
{
    ReadingT reading;
    const size_t zero = list.find('\0');
    std::vector<std::string> fields = split(list.substr(0, zero));
    if (zero == std::string_view::npos && fields.back().empty()) fields.pop_back();
    const size_t count = fields.size();
    fields.resize(count + 4);
    for (size_t i = 0; i < count; i += 5) {
        const std::string& mark = fields[i + 1];
        if (!fields[i].empty()) continue;
        reading.sev = mark.substr(0, 1) == "{" ? severityOf(mark) : ERR_SEV_ERROR;
        reading.message = fields[i + 2] + '\1' + fields[i + 3] + '\1' + fields[i + 4];
    }
    return reading;
}

ReadingT readText(std::string_view text)
{
    if (text.substr(0, 1) == "\1") return readVariants(text.substr(1));
    if (text.substr(0, 1) != "{") return {ERR_SEV_ERROR, std::string(text)};
    ReadingT reading = {severityOf(text), std::string(text.substr(std::min(text.find('}'), text.size() - 1) + 1))};
    if (reading.message[0] == ' ' || reading.message[0] == '\t') reading.message.erase(0, 1);
    return reading;
}

// With zeros, which come of overlong forms.
std::string bytesOf(const StringC& text) { return {text.utf8(), text.utf8Bytes()}; }

void requireEntry(const ErrEntryI& entry, std::string_view message)
{
    std::vector<std::string> parts = split(message);
    parts.resize(3);
    FUZZ_REQUIRE(bytesOf(entry.problem()) == parts[0]);
    FUZZ_REQUIRE(bytesOf(entry.reason()) == parts[1]);
    FUZZ_REQUIRE(bytesOf(entry.solution()) == parts[2]);
    std::string lines = parts[0];
    if (!parts[1].empty()) lines += '\n' + parts[1];
    if (!parts[2].empty()) lines += '\n' + parts[2];
    FUZZ_REQUIRE(bytesOf(entry.message()) == lines);
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const ReadingT expected = readText(text);
    ErrSevT sev;
    std::string room;
    FUZZ_REQUIRE(selectStyle(text, sev, room) == expected.message);
    FUZZ_REQUIRE(sev == expected.sev);

    // As a default text it ends at a zero byte, and what is no UTF-8 is replaced.
    ErrBufI& buffer = *getErrBuf(2);
    const ReadingT recorded = readText(text.c_str());
    Error(0xE1B20005L, text.c_str());
    FUZZ_REQUIRE(buffer.count() == (recorded.sev != ERR_SEV_NONE ? 1 : 0));
    if (buffer.count() != 0) {
        const StringC message(recorded.message.data(), recorded.message.size(), StringC::CC_UTF8);
        FUZZ_REQUIRE(buffer.get(0)->severity() == recorded.sev);
        requireEntry(*buffer.get(0), bytesOf(message));
    }
    buffer.reset();
    return 0;
}
