// Group "encodings": UTF-8 from and to UTF-16LE, UTF-32 and Latin-1, 1 MB of UTF-8 in several scripts.
//
// Where a library converts into the caller's buffer, that is what is measured, with one buffer that is
// large enough and used again; the others pay for their result. Throughput is per byte of the UTF-8.

#include "textencoding.h"

#include "support/bench.h"
#include "support/workload.h"

#include <QList>
#include <QString>
#include <boost/locale/encoding_utf.hpp>
#include <cstring>
#include <glib.h>
#include <iconv.h>
#include <memory>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

using namespace workload;

namespace {

const size_t ROOM = 4 * MB + 64;
alignas(64) char g_out[ROOM];

// A result in memory that somebody else owns.
struct SpanT {
    const void* data;
    size_t size;
};

// One conversion of one sample.
struct ConversionT {
    std::string workload;
    const SampleT& sample;
    SpanT in;
    SpanT expected;
};

// `convert()` returns the result as a span, good until the next call.
template <class ConvertT>
void row(const ConversionT& c, const std::string& library, ConvertT convert)
{
    addVerifiedRow(c.workload + "_" + c.sample.name, library, bytes(c.sample.utf8.size()), [convert](bool whole) {
        const SpanT result = convert();
        return whole ? digestOf(result.data, result.size) : DigestT{result.size};
    });
}

// `convert()` returns an object that holds the units.
template <class ConvertT>
void newRow(const ConversionT& c, const std::string& library, ConvertT convert)
{
    addVerifiedRow(c.workload + "_" + c.sample.name, library, bytes(c.sample.utf8.size()), [convert](bool whole) {
        const auto result = convert();
        keep(*result.data());
        const size_t size = static_cast<size_t>(result.size()) * sizeof(*result.data());
        return whole ? digestOf(result.data(), size) : DigestT{size};
    });
}

// `convert(&count)` returns units of GLib's memory.
template <class ConvertT>
void glibRow(const ConversionT& c, ConvertT convert)
{
    addVerifiedRow(c.workload + "_" + c.sample.name, "GLib", bytes(c.sample.utf8.size()), [convert](bool whole) {
        glong count = 0;
        auto* const units = convert(&count);
        const size_t size = static_cast<size_t>(count) * sizeof(*units);
        const DigestT digest = whole ? digestOf(units, size) : DigestT{size};
        g_free(units);
        return digest;
    });
}

void limitRow(const ConversionT& c)
{
    row(c, "limit", [result = c.expected] {
        std::memcpy(g_out, result.data, result.size);
        return SpanT{g_out, result.size};
    });
}

void iconvRow(const ConversionT& c, const char* from, const char* to)
{
    row(c, "iconv", [converter = iconv_open(to, from), in = c.in] {
        char* in_p = static_cast<char*>(const_cast<void*>(in.data));
        char* out_p = g_out;
        size_t in_left = in.size;
        size_t out_left = ROOM;
        iconv(converter, &in_p, &in_left, &out_p, &out_left);
        return SpanT{g_out, ROOM - out_left};
    });
}

void icuConverterRow(const ConversionT& c, const char* from, const char* to)
{
    UErrorCode opened = U_ZERO_ERROR;
    row(c, "ICU converter", [target = ucnv_open(to, &opened), source = ucnv_open(from, &opened), in = c.in] {
        UErrorCode status = U_ZERO_ERROR;
        char* out = g_out;
        const char* in_p = static_cast<const char*>(in.data);
        ucnv_convertEx(target, source, &out, out + ROOM, &in_p, in_p + in.size, nullptr, nullptr, nullptr, nullptr,
                       true, true, &status);
        return SpanT{g_out, static_cast<size_t>(out - g_out)};
    });
}

void oursFromUtf8Row(const ConversionT& c, TextEncodingI* to)
{
    row(c, "ours", [encoder = std::shared_ptr<TextEncoderI>(to->getEncoder()), in = c.in] {
        bool lossy = false;
        const size_t size = encoder->encode(static_cast<const UTF8T*>(in.data), in.size,
                                            reinterpret_cast<U8BitT*>(g_out), ROOM, &lossy);
        return SpanT{g_out, size};
    });
}

void oursToUtf8Row(const ConversionT& c, TextEncodingI* from)
{
    row(c, "ours", [decoder = std::shared_ptr<TextDecoderI>(from->getDecoder()), in = c.in] {
        size_t count = 0;
        const size_t size = decoder->decodeBytes(static_cast<const U8BitT*>(in.data), in.size,
                                                 reinterpret_cast<UTF8T*>(g_out), ROOM, &count);
        return SpanT{g_out, size};
    });
}

template <class TextT>
SpanT spanOf(const TextT& text)
{
    return {text.data(), text.size() * sizeof(text[0])};
}

void utf16Rows(const SampleT& s)
{
    const qsizetype utf8Size = static_cast<qsizetype>(s.utf8.size());
    const ConversionT to{"utf8_to_utf16", s, spanOf(s.utf8), spanOf(s.utf16)};
    oursFromUtf8Row(to, TextEncodingI::UTF16LE());
    iconvRow(to, "UTF-8", "UTF-16LE");
    icuConverterRow(to, "UTF-8", "UTF-16LE");
    row(to, "ICU", [&s] {
        int32_t count = 0;
        UErrorCode status = U_ZERO_ERROR;
        u_strFromUTF8(reinterpret_cast<UChar*>(g_out), ROOM / 2, &count, s.utf8.data(),
                      static_cast<int32_t>(s.utf8.size()), &status);
        return SpanT{g_out, static_cast<size_t>(count) * 2};
    });
    glibRow(to, [&s](glong* n) {
        return g_utf8_to_utf16(s.utf8.data(), static_cast<glong>(s.utf8.size()), nullptr, n, nullptr);
    });
    newRow(to, "Qt", [&s, utf8Size] { return QString::fromUtf8(s.utf8.data(), utf8Size); });
    newRow(to, "Boost", [&s] { return boost::locale::conv::utf_to_utf<char16_t>(s.utf8); });
    limitRow(to);

    const ConversionT from{"utf16_to_utf8", s, spanOf(s.utf16), spanOf(s.utf8)};
    oursToUtf8Row(from, TextEncodingI::UTF16LE());
    iconvRow(from, "UTF-16LE", "UTF-8");
    icuConverterRow(from, "UTF-16LE", "UTF-8");
    row(from, "ICU", [&s] {
        int32_t count = 0;
        UErrorCode status = U_ZERO_ERROR;
        u_strToUTF8(g_out, ROOM, &count, s.utf16.data(), static_cast<int32_t>(s.utf16.size()), &status);
        return SpanT{g_out, static_cast<size_t>(count)};
    });
    glibRow(from, [&s](glong* n) {
        const gunichar2* units = reinterpret_cast<const gunichar2*>(s.utf16.data());
        return g_utf16_to_utf8(units, static_cast<glong>(s.utf16.size()), nullptr, n, nullptr);
    });
    newRow(from, "Qt", [&s] { return QStringView(s.utf16).toUtf8(); });
    newRow(from, "Boost", [&s] { return boost::locale::conv::utf_to_utf<char>(s.utf16); });
    limitRow(from);
}

void utf32Rows(const SampleT& s)
{
    const qsizetype utf8Size = static_cast<qsizetype>(s.utf8.size());
    const ConversionT to{"utf8_to_utf32", s, spanOf(s.utf8), spanOf(s.utf32)};
    oursFromUtf8Row(to, TextEncodingI::WCHAR());
    iconvRow(to, "UTF-8", "UTF-32LE");
    icuConverterRow(to, "UTF-8", "UTF-32LE");
    glibRow(to, [&s](glong* n) {
        return g_utf8_to_ucs4(s.utf8.data(), static_cast<glong>(s.utf8.size()), nullptr, n, nullptr);
    });
    newRow(to, "Qt", [&s, utf8Size] { return QString::fromUtf8(s.utf8.data(), utf8Size).toUcs4(); });
    newRow(to, "Boost", [&s] { return boost::locale::conv::utf_to_utf<char32_t>(s.utf8); });
    limitRow(to);

    const ConversionT from{"utf32_to_utf8", s, spanOf(s.utf32), spanOf(s.utf8)};
    oursToUtf8Row(from, TextEncodingI::WCHAR());
    iconvRow(from, "UTF-32LE", "UTF-8");
    icuConverterRow(from, "UTF-32LE", "UTF-8");
    glibRow(from, [&s](glong* n) {
        const gunichar* units = reinterpret_cast<const gunichar*>(s.utf32.data());
        return g_ucs4_to_utf8(units, static_cast<glong>(s.utf32.size()), nullptr, n, nullptr);
    });
    newRow(from, "Qt",
           [&s] { return QString::fromUcs4(s.utf32.data(), static_cast<qsizetype>(s.utf32.size())).toUtf8(); });
    newRow(from, "Boost", [&s] { return boost::locale::conv::utf_to_utf<char>(s.utf32); });
    limitRow(from);
}

void latin1Rows(const SampleT& s)
{
    const auto glib = [](const std::string& text, const char* to, const char* from, glong* n) {
        gsize written = 0;
        char* const made =
            g_convert(text.data(), static_cast<gssize>(text.size()), to, from, nullptr, &written, nullptr);
        *n = static_cast<glong>(written);
        return made;
    };
    const ConversionT to{"utf8_to_latin1", s, spanOf(s.utf8), spanOf(s.latin1)};
    oursFromUtf8Row(to, TextEncodingI::LATIN1());
    iconvRow(to, "UTF-8", "ISO-8859-1");
    icuConverterRow(to, "UTF-8", "ISO-8859-1");
    glibRow(to, [&s, glib](glong* n) { return glib(s.utf8, "ISO-8859-1", "UTF-8", n); });
    newRow(to, "Qt",
           [&s] { return QString::fromUtf8(s.utf8.data(), static_cast<qsizetype>(s.utf8.size())).toLatin1(); });
    limitRow(to);

    const ConversionT from{"latin1_to_utf8", s, spanOf(s.latin1), spanOf(s.utf8)};
    oursToUtf8Row(from, TextEncodingI::LATIN1());
    iconvRow(from, "ISO-8859-1", "UTF-8");
    icuConverterRow(from, "ISO-8859-1", "UTF-8");
    glibRow(from, [&s, glib](glong* n) { return glib(s.latin1, "UTF-8", "ISO-8859-1", n); });
    newRow(from, "Qt",
           [&s] { return QString::fromLatin1(s.latin1.data(), static_cast<qsizetype>(s.latin1.size())).toUtf8(); });
    limitRow(from);
}

}   // namespace

void registerRows()
{
    for (const SampleT& sample : samples()) {
        utf16Rows(sample);
        utf32Rows(sample);
        if (!sample.latin1.empty()) latin1Rows(sample);
    }
}
