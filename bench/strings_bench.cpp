// Group "strings": making, sharing, growing, comparing, searching, walking, casing and reading text.
//
// Libraries that hold UTF-16 (Qt, ICU) get their input in that form, prepared outside of the timed loop,
// unless making the string is the workload. Positions are in each library's own unit, so searches agree
// on "found" only.

#include "stringc.h"

#include "support/bench.h"
#include "support/limits.h"
#include "support/workload.h"

#include <QByteArray>
#include <QString>
#include <absl/strings/ascii.h>
#include <absl/strings/cord.h>
#include <absl/strings/match.h>
#include <absl/strings/numbers.h>
#include <absl/strings/str_cat.h>
#include <atomic>
#include <boost/algorithm/string.hpp>
#include <boost/lexical_cast.hpp>
#include <boost/locale/utf.hpp>
#include <charconv>
#include <cstring>
#include <functional>
#include <glib.h>
#include <memory>
#include <strings.h>
#include <unicode/casemap.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

using namespace workload;

namespace {

StringC oursOf(std::string_view text) { return StringC(text.data(), text.size(), StringC::CC_UTF8); }
QString qtOf(const std::string& text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }
QByteArray qtBytesOf(const std::string& text) { return QByteArray(text.data(), static_cast<qsizetype>(text.size())); }
icu::UnicodeString icuOf(const std::string& text)
{
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}
absl::string_view abslOf(std::string_view text) { return {text.data(), text.size()}; }

// ---- making and destroying ---------------------------------------------------------------------------

// `make(text)` makes a string, destroys it and returns its length.
template <class MakeT>
void makeRow(const std::string& library, MakeT make)
{
    for (const size_t length : {8u, 24u}) {
        addRow("make_" + std::to_string(length), library, items(64), [&texts = shortTexts(length), make] {
            size_t total = 0;
            for (const std::string& text : texts) total += make(text.c_str());
            return DigestT{total};
        });
    }
}

void makeRows()
{
    makeRow("ours", [](const char* text) {
        const StringC made(text, StringC::CC_UTF8);
        return static_cast<size_t>(made.length());
    });
    makeRow("std", [](const char* text) {
        const std::string made(text);
        keep(*made.data());
        return made.size();
    });
    makeRow("std shared", [](const char* text) {
        const auto made = std::make_shared<const std::string>(text);
        keep(made);
        return made->size();
    });
    makeRow("GLib", [](const char* text) {
        char* const made = g_ref_string_new(text);
        const size_t size = g_ref_string_length(made);
        g_ref_string_release(made);
        return size;
    });
    makeRow("GLib GString", [](const char* text) {
        GString* const made = g_string_new(text);
        const size_t size = made->len;
        g_string_free(made, TRUE);
        return size;
    });
    makeRow("Qt", [](const char* text) {
        const QString made = QString::fromUtf8(text);
        keep(*made.constData());
        return static_cast<size_t>(made.size());
    });
    makeRow("Qt bytes", [](const char* text) {
        const QByteArray made(text);
        keep(*made.constData());
        return static_cast<size_t>(made.size());
    });
    makeRow("ICU", [](const char* text) {
        const icu::UnicodeString made = icu::UnicodeString::fromUTF8(text);
        keep(made);
        return static_cast<size_t>(made.length());
    });
    makeRow("Abseil Cord", [](const char* text) {
        const absl::Cord made{absl::string_view(text)};
        keep(made);
        return made.size();
    });
    makeRow("limit", [](const char* text) {
        char place[32];
        const size_t size = std::strlen(text);
        std::memcpy(place, text, size + 1);
        keep(place);
        return size;
    });
}

// A checked text of 1 MB made out of UTF-8.
template <class MakeT>
void takeInRow(const std::string& library, MakeT make)
{
    for (const char* name : {"ascii", "mixed"}) {
        const std::string& text = std::string_view(name) == "ascii" ? ascii1mb().text : mixed1mb().text;
        addRow(std::string("utf8_in_1mb_") + name, library, bytes(MB), [&text, make] { return DigestT{make(text)}; });
    }
}

void takeInRows()
{
    takeInRow("ours", [](const std::string& text) { return oursOf(text).utf8Bytes() > 0; });
    takeInRow("Qt", [](const std::string& text) { return qtOf(text).size() > 0; });
    takeInRow("ICU", [](const std::string& text) { return icuOf(text).length() > 0; });
    takeInRow("GLib", [](const std::string& text) {
        if (!g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr)) return false;
        GString* const made = g_string_new_len(text.data(), static_cast<gssize>(text.size()));
        keep(*made->str);
        g_string_free(made, TRUE);
        return true;
    });
    takeInRow("limit", [](const std::string& text) {
        const std::unique_ptr<char[]> made(new char[text.size() + 1]);
        std::memcpy(made.get(), text.data(), text.size() + 1);
        keep(*made.get());
        return true;
    });
}

// ---- copying and destroying a shared string ----------------------------------------------------------

template <class StringT>
void copyRow(const std::string& library, StringT value)
{
    addRow("copy_destroy_100", library, items(64), [shared = std::make_shared<StringT>(std::move(value))] {
        for (int i = 0; i < 64; ++i) {
            StringT copy(*shared);
            keep(copy);
        }
        return DigestT{1};
    });
}

void copyRows()
{
    copyRow("ours", oursOf(ascii100()));
    copyRow("std", ascii100());
    copyRow("std shared", std::make_shared<const std::string>(ascii100()));
    copyRow("Qt", qtOf(ascii100()));
    copyRow("Qt bytes", qtBytesOf(ascii100()));
    copyRow("ICU", icuOf(ascii100()));
    copyRow("Abseil Cord", absl::Cord(ascii100()));
    addRow("copy_destroy_100", "GLib", items(64), [text = g_ref_string_new(ascii100().c_str())] {
        for (int i = 0; i < 64; ++i) {
            char* const copy = g_ref_string_acquire(text);
            keep(*copy);
            g_ref_string_release(copy);
        }
        return DigestT{1};
    });
    addRow("copy_destroy_100", "limit", items(64), [count = std::make_shared<std::atomic<int>>(1)] {
        for (int i = 0; i < 64; ++i) {
            count->fetch_add(1);
            if (count->fetch_sub(1) == 1) std::abort();
        }
        return DigestT{1};
    });
}

// ---- appending ---------------------------------------------------------------------------------------

// `run(count, withLength)` appends one character `count` times, asks for the length after each if told to,
// and returns the final length. `runPieces(count)` appends 32 characters `count` times.
template <class RunT, class RunPiecesT>
void appendRow(const std::string& library, RunT run, RunPiecesT runPieces)
{
    addRow("append_char_10k", library, items(10000), [run] { return DigestT{run(10000, false)}; });
    addRow("append_char_length_10k", library, items(10000), [run] { return DigestT{run(10000, true)}; });
    addRow("append_32_to_1mb", library, bytes(MB), [runPieces] { return DigestT{runPieces(MB / 32)}; });
}

// The same for every class that appends by `append` and tells its size by `size`.
template <class StringT, class CharT, class PieceT, class SizeT>
void appendRowOf(const std::string& library, CharT ch, PieceT piece, SizeT size)
{
    const auto run = [=](int count, bool withLength) {
        StringT text;
        for (int i = 0; i < count; ++i) {
            text += ch;
            if (withLength) {
                size_t length = size(text);
                keep(length);
            }
        }
        return size(text);
    };
    const auto runPieces = [=](size_t count) {
        StringT text;
        for (size_t i = 0; i < count; ++i) text += piece;
        return size(text);
    };
    appendRow(library, run, runPieces);
}

void appendRows()
{
    const auto size = [](const auto& text) { return static_cast<size_t>(text.size()); };
    const auto length = [](const auto& text) { return static_cast<size_t>(text.length()); };
    appendRowOf<StringC>("ours", UCS4{'x'}, oursOf(ascii32()), length);
    appendRowOf<std::string>("std", 'x', ascii32(), size);
    appendRowOf<QString>("Qt", QChar(u'x'), qtOf(ascii32()), size);
    appendRowOf<QByteArray>("Qt bytes", 'x', qtBytesOf(ascii32()), size);
    appendRowOf<icu::UnicodeString>("ICU", u'x', icuOf(ascii32()), length);
    const auto absl = [](size_t count, std::string_view piece) {
        std::string text;
        for (size_t i = 0; i < count; ++i) absl::StrAppend(&text, abslOf(piece));
        return text.size();
    };
    appendRow(
        "Abseil", [absl](int count, bool) { return absl(static_cast<size_t>(count), "x"); },
        [absl](size_t count) { return absl(count, ascii32()); });
    const auto glib = [](size_t count, std::string_view piece) {
        GString* const text = g_string_new(nullptr);
        for (size_t i = 0; i < count; ++i) {
            if (piece.size() == 1) {
                g_string_append_c(text, piece[0]);
            } else {
                g_string_append_len(text, piece.data(), static_cast<gssize>(piece.size()));
            }
        }
        const size_t total = text->len;
        g_string_free(text, TRUE);
        return total;
    };
    appendRow(
        "GLib", [glib](int count, bool) { return glib(static_cast<size_t>(count), "x"); },
        [glib](size_t count) { return glib(count, ascii32()); });
}

// ---- comparing ---------------------------------------------------------------------------------------

template <class FromT, class EqualT>
void equalRow(const std::string& library, FromT from, EqualT equal)
{
    typedef decltype(from(ascii1k())) StringT;
    std::string otherText = ascii1k();
    otherText.back() = '!';
    const auto a = std::make_shared<StringT>(from(ascii1k()));
    const auto row = [&](const char* workload, const std::string& text) {
        addRow(workload, library, items(64), [a, b = std::make_shared<StringT>(from(text)), equal] {
            DigestT count = 0;
            for (int i = 0; i < 64; ++i) {
                keep(*a);
                count += equal(*a, *b) ? 1 : 0;
            }
            return count;
        });
    };
    row("equal_1k", ascii1k());
    row("unequal_last_byte_1k", otherText);
}

void equalRows()
{
    const auto plain = [](const auto& a, const auto& b) { return a == b; };
    const auto same = [](const std::string& text) { return text; };
    equalRow("ours", oursOf, plain);
    equalRow("std", same, plain);
    equalRow("Qt", qtOf, plain);
    equalRow("Qt bytes", qtBytesOf, plain);
    equalRow("ICU", icuOf, plain);
    equalRow(
        "Abseil Cord", [](const std::string& text) { return absl::Cord(text); }, plain);
    equalRow("GLib", same,
             [](const std::string& a, const std::string& b) { return g_str_equal(a.c_str(), b.c_str()); });
    equalRow("limit", same,
             [](const std::string& a, const std::string& b) { return std::memcmp(a.data(), b.data(), 1024) == 0; });
}

// ---- searching ---------------------------------------------------------------------------------------

void findRow(const std::string& what, const std::string& library, std::function<bool()> find)
{
    addRow("find_" + what + "_1mb", library, bytes(MB), [find] { return DigestT{find()}; });
}

void findCharRows(const std::string& script, const SoughtT& sought)
{
    const std::string what = "char_" + script;
    const std::string& text = sought.text;
    const char32_t ch = sought.ch;
    const std::string ch8 = sought.chUtf8;
    findRow(what, "ours", [s = oursOf(text), ch] { return s.find(UCS4{ch}) >= 0; });
    findRow(what, "std",
            [&text, ch8] { return (ch8.size() == 1 ? text.find(ch8[0]) : text.find(ch8)) != std::string::npos; });
    findRow(what, "GLib",
            [&text, ch] { return g_utf8_strchr(text.data(), static_cast<gssize>(text.size()), ch) != nullptr; });
    findRow(what, "Qt", [s = qtOf(text), ch] { return s.indexOf(QChar(static_cast<char16_t>(ch))) >= 0; });
    findRow(what, "ICU", [s = icuOf(text), ch] { return s.indexOf(static_cast<UChar32>(ch)) >= 0; });
    findRow(what, "limit", [&text] { return std::memchr(text.data(), '\x01', text.size()) == nullptr; });
}

void findNeedleRows(const std::string& script, const SoughtT& sought)
{
    const std::string what = "needle10_" + script;
    const std::string& text = sought.text;
    const std::string& needle = sought.needle;
    findRow(what, "ours", [s = oursOf(text), n = oursOf(needle)] { return s.find(n) >= 0; });
    findRow(what, "std", [&] { return text.find(needle) != std::string::npos; });
    findRow(what, "libc strstr", [&] { return std::strstr(text.c_str(), needle.c_str()) != nullptr; });
    findRow(what, "GLib",
            [&] { return g_strstr_len(text.data(), static_cast<gssize>(text.size()), needle.c_str()) != nullptr; });
    findRow(what, "Qt", [s = qtOf(text), n = qtOf(needle)] { return s.indexOf(n) >= 0; });
    findRow(what, "Qt bytes", [s = qtBytesOf(text), n = qtBytesOf(needle)] { return s.indexOf(n) >= 0; });
    findRow(what, "ICU", [s = icuOf(text), n = icuOf(needle)] { return s.indexOf(n) >= 0; });
    findRow(what, "libc memmem",
            [&] { return memmem(text.data(), text.size(), needle.data(), needle.size()) != nullptr; });
    findRow(what, "limit", [&] { return std::memchr(text.data(), '\x01', text.size()) == nullptr; });
}

// ---- counting, walking and indexing ------------------------------------------------------------------

void countRows()
{
    const std::string& text = mixed1mb().text;
    const auto row = [](const char* library, auto count) {
        addRow("count_chars_1mb", library, bytes(MB), [count] { return DigestT{static_cast<size_t>(count())}; });
    };
    // A body remembers its length: each one counts only once. "vutf8" leaves the count open.
    addPreparedRow(
        "count_chars_1mb", "ours", bytes(MB),
        [&text] { return StringC(text.data(), text.size(), StringC::CC_VALID_UTF8); },
        [](const StringC& s) { return static_cast<DigestT>(s.length()); });
    row("GLib", [&text] { return g_utf8_strlen(text.data(), static_cast<gssize>(text.size())); });
    row("ICU", [s = icuOf(text)] { return s.countChar32(); });
    row("Boost", [&text] {
        size_t count = 0;
        for (auto p = text.begin(); p != text.end(); ++count)
            boost::locale::utf::utf_traits<char>::decode(p, text.end());
        return count;
    });
    row("libc", [&text] { return std::mbstowcs(nullptr, text.c_str(), 0); });
    row("limit", [&text] { return limits::firstBytes(text.data(), text.size()); });
}

void indexRows()
{
    const auto random = [](const char* library, auto at) {
        addRow("random_index_10k_ascii", library, items(10000), [at] {
            DigestT sum = 0;
            for (const uint32_t index : indexes10k()) sum += static_cast<DigestT>(at(index));
            return sum;
        });
    };
    const std::string& ascii = ascii10k();
    random("ours", [s = oursOf(ascii)](uint32_t i) { return s[i]; });
    random("std", [&ascii](uint32_t i) { return ascii[i]; });
    random("Qt", [s = qtOf(ascii)](uint32_t i) { return s.at(i).unicode(); });
    random("ICU", [s = icuOf(ascii)](uint32_t i) { return s.char32At(static_cast<int32_t>(i)); });
    random("Abseil Cord", [s = absl::Cord(ascii)](uint32_t i) { return s[i]; });

    // Every character of a mixed text, by index: what a loop over s[i] costs.
    const std::string& mixed = mixed10k();
    const size_t count = utf32Of(mixed).size();
    const auto scan = [count](const char* library, auto at) {
        addRow("scan_by_index_10k_mixed", library, items(count), [at, count] {
            DigestT sum = 0;
            for (size_t i = 0; i < count; ++i) sum += static_cast<DigestT>(at(static_cast<long>(i)));
            return sum;
        });
    };
    scan("ours", [s = oursOf(mixed)](long i) { return s[i]; });
    scan("GLib", [&mixed](long i) { return g_utf8_get_char(g_utf8_offset_to_pointer(mixed.data(), i)); });
    scan("ICU", [s = icuOf(mixed)](long i) { return s.char32At(s.moveIndex32(0, static_cast<int32_t>(i))); });
    addRow("scan_by_index_10k_mixed", "limit", items(count),
           [&mixed] { return limits::sumOfCharacters(mixed.data(), mixed.size()); });
}

// ---- case --------------------------------------------------------------------------------------------

// `lower()` gives the lower-case text as something that `text` turns into UTF-8.
template <class LowerT, class TextT>
void lowerRow(const std::string& script, const std::string& library, LowerT lower, TextT text)
{
    addVerifiedRow("lower_1mb_" + script, library, bytes(MB), [=](bool whole) {
        const auto result = lower();
        keep(result);
        return whole ? digestOf(std::string_view(text(result))) : DigestT{1};
    });
}

std::string icuUtf8Lower(const std::string& text)
{
    std::string lower;
    lower.reserve(text.size() + 16);
    icu::StringByteSink<std::string> sink(&lower);
    UErrorCode status = U_ZERO_ERROR;
    const icu::StringPiece piece(text.data(), static_cast<int32_t>(text.size()));
    icu::CaseMap::utf8ToLower("", 0, piece, sink, nullptr, status);
    return lower;
}

void lowerRows(const std::string& script, const CasedT& cased)
{
    const std::string& text = cased.text;
    const auto itself = [](const std::string& result) -> const std::string& { return result; };
    lowerRow(
        script, "ours", [s = oursOf(text)] { return s.asLower(); },
        [](const StringC& s) { return std::string(s.utf8()); });
    if (script == "ascii") {
        lowerRow(
            script, "Abseil", [&text] { return absl::AsciiStrToLower(text); }, itself);
        lowerRow(
            script, "Boost", [&text] { return boost::algorithm::to_lower_copy(text, std::locale::classic()); }, itself);
        const auto vectors = [&text] {
            std::string lower(text.size(), '\0');
            limits::asciiLower(text.data(), lower.data(), text.size());
            return lower;
        };
        lowerRow(script, "limit", vectors, itself);
    }
    const auto glib = [&text] {
        return std::unique_ptr<char, void (*)(void*)>(g_utf8_strdown(text.data(), static_cast<gssize>(text.size())),
                                                      g_free);
    };
    lowerRow(script, "GLib", glib, [](const auto& lower) { return std::string(lower.get()); });
    lowerRow(
        script, "Qt", [s = qtOf(text)] { return s.toLower(); }, [](const QString& s) { return s.toStdString(); });
    lowerRow(
        script, "ICU", [&text] { return icuUtf8Lower(text); }, itself);
}

void equalIgnoringCaseRows(const std::string& script, const CasedT& cased)
{
    const std::string& a = cased.text;
    const std::string& b = cased.lower;
    const auto row = [&](const char* library, auto equal) {
        addRow("equal_ignoring_case_1k_" + script, library, bytes(1024),
               [equal] { return DigestT{equal() ? 1u : 0u}; });
    };
    row("ours", [x = oursOf(a), y = oursOf(b)] { return x.equalCI(y); });
    if (script == "ascii") {
        row("libc", [&] { return strcasecmp(a.c_str(), b.c_str()) == 0; });
        row("Abseil", [&] { return absl::EqualsIgnoreCase(a, b); });
        row("Boost", [&] { return boost::algorithm::iequals(a, b, std::locale::classic()); });
    }
    row("GLib", [&] {
        char* const x = g_utf8_casefold(a.data(), static_cast<gssize>(a.size()));
        char* const y = g_utf8_casefold(b.data(), static_cast<gssize>(b.size()));
        const bool equal = std::strcmp(x, y) == 0;
        g_free(x);
        g_free(y);
        return equal;
    });
    row("Qt", [x = qtOf(a), y = qtOf(b)] { return x.compare(y, Qt::CaseInsensitive) == 0; });
    row("ICU", [x = icuOf(a), y = icuOf(b)] { return x.caseCompare(y, 0) == 0; });
    row("limit", [&b, same = b] { return std::memcmp(b.data(), same.data(), b.size()) == 0; });
}

// ---- numbers -----------------------------------------------------------------------------------------

template <class FromT, class ParseT>
void parseRow(const std::string& library, FromT from, ParseT parse)
{
    std::vector<decltype(from(std::string()))> texts;
    for (const std::string& text : decimals10k()) texts.push_back(from(text));
    addRow("parse_number_10k", library, items(texts.size()), [texts, parse] {
        DigestT sum = 0;
        for (const auto& text : texts) sum += static_cast<DigestT>(parse(text));
        return sum;
    });
}

void parseRows()
{
    const auto same = [](const std::string& text) { return text; };
    parseRow("ours", oursOf, [](const StringC& text) { return text.asLongLong(); });
    parseRow("std from_chars", same, [](const std::string& text) {
        long long value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    });
    parseRow("libc strtoll", same, [](const std::string& text) { return std::strtoll(text.c_str(), nullptr, 10); });
    parseRow("Abseil", same, [](const std::string& text) {
        long long value = 0;
        (void)absl::SimpleAtoi(text, &value);
        return value;
    });
    parseRow("GLib", same, [](const std::string& text) { return g_ascii_strtoll(text.c_str(), nullptr, 10); });
    parseRow("Boost", same, [](const std::string& text) { return boost::lexical_cast<long long>(text); });
    parseRow("Qt", qtOf, [](const QString& text) { return text.toLongLong(); });
}

}   // namespace

void registerRows()
{
    makeRows();
    takeInRows();
    copyRows();
    appendRows();
    equalRows();
    for (const bool isAscii : {true, false}) {
        const std::string script = isAscii ? "ascii" : "mixed";
        findCharRows(script, isAscii ? ascii1mb() : mixed1mb());
        findNeedleRows(script, isAscii ? ascii1mb() : mixed1mb());
    }
    countRows();
    indexRows();
    for (const bool isAscii : {true, false}) {
        const std::string script = isAscii ? "ascii" : "mixed";
        lowerRows(script, isAscii ? casedAscii(MB) : casedMixed(MB));
        equalIgnoringCaseRows(script, isAscii ? casedAscii(1024) : casedMixed(1024));
    }
    parseRows();
}
