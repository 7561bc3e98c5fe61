// The scan of StringC::formatArgs over any format: it never reads more than 128 arguments, and what it reads
// is what the engine then asks for.

#include "arglist.h"

#include "fuzz.h"

#include <cstdarg>
#include <utility>

namespace {

ArgListC read(const StringC* format, ...)
{
    std::va_list ap;
    va_start(ap, format);
    ArgListC list = StringC::formatArgs(*format, ap);
    va_end(ap);
    return list;
}

// Enough arguments for 128 of the widest kind. Each is the address of a StringC, which can be read as any
// kind: as a text too, because the highest byte of an address in the body's own place is 0.
template <size_t... INDICES>
ArgListC readFrom(const StringC& format, const StringC& any, std::index_sequence<INDICES...>)
{
    return read(&format, ((void)INDICES, &any)...);
}

// Whether the format has only what both the scan and the engine know, and no widths from arguments.
bool isPlain(std::string_view format)
{
    if (format.find_first_of("0123456789*$.jzqL!TDt") != std::string_view::npos) return false;
    static const char* const CONVERSIONS = "diuoxXbcCsSp%";
    for (size_t at = format.find('%'); at != std::string_view::npos; at = format.find('%', at)) {
        at = format.find_first_not_of("-+# ", at + 1);
        if (at == std::string_view::npos || std::string_view(CONVERSIONS).find(format[at]) == std::string_view::npos) {
            return false;
        }
        ++at;
    }
    return true;
}

size_t countConversions(std::string_view format)
{
    size_t count = 0;
    for (size_t at = format.find('%'); at != std::string_view::npos; at = format.find('%', at)) {
        at = format.find_first_not_of("-+# ", at + 1);
        if (format[at++] != '%') ++count;
    }
    return count;
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const StringC format(bytes.data(), bytes.size(), StringC::CC_UTF8);
    static const StringC any("any");
    const ArgListC list = readFrom(format, any, std::make_index_sequence<260>());
    FUZZ_REQUIRE(list.size() <= 128);
    for (long i = 0; i < list.size(); ++i) FUZZ_REQUIRE(list[i] != nullptr);

    const std::string_view seen = format.utf8();   // what was malformed is repaired, and a zero ends it
    if (isPlain(seen)) {
        FUZZ_REQUIRE(list.size() == static_cast<long>(std::min<size_t>(countConversions(seen), 128)));
    }
    return 0;
}
