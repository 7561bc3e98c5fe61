// Group "formatting": building one message as a new string, as messages for logs and errors are made.
//
// Ours collects typed values in a list and formats them by a text that is known only at run time. "fmt"
// formats by a run-time text too; "fmt list" also collects its values at run time first, which is the same
// work as ours. The other libraries see their formats when they are compiled.

#include "arglist.h"
#include "stringc.h"

#include "support/bench.h"

#include <QString>
#include <absl/strings/str_format.h>
#include <boost/format.hpp>
#include <cstdio>
#include <cstring>
#include <fmt/args.h>
#include <fmt/format.h>
#include <glib.h>
#include <iomanip>
#include <memory>
#include <sstream>

namespace {

// The values of all messages. Nothing about them is known when the code is compiled: see keep().
struct ValuesT {
    const char* program = "inventory";
    const char* path = "/opt/vendor/agent/inventory.cpp";
    const char* host = "server-17.example.net";
    const char* state = "retrying";
    int code = 1234;
    int line = 87;
    int a = -42;
    int b = 7;
    int c = 100000;
    int d = 2147483647;
    int e = 0;
    unsigned flags = 0xE0CB0010u;
};
ValuesT v;

// `make()` makes the message, `text` turns it into UTF-8.
template <class MakeT, class TextT>
void row(const std::string& workload, const std::string& library, MakeT make, TextT text)
{
    addVerifiedRow(workload, library, items(1), [=](bool whole) {
        keep(v);
        const auto made = make();
        keep(made);
        return whole ? digestOf(std::string_view(text(made))) : DigestT{1};
    });
}
template <class MakeT>
void row(const std::string& workload, const std::string& library, MakeT make)
{
    row(
        workload, library, make, [](const auto& made) -> const auto& { return made; });
}

void oursRow(const std::string& workload, const char* format, ArgListC (*list)())
{
    row(
        workload, "ours", [fmt = StringC(format), list] { return StringC::format(fmt, list()); },
        [](const StringC& made) { return std::string(made.utf8()); });
}

template <class... ValuesT>
std::string snprintfTwice(const char* format, ValuesT... values)
{
    std::string text(static_cast<size_t>(std::snprintf(nullptr, 0, format, values...)), '\0');
    std::snprintf(text.data(), text.size() + 1, format, values...);
    return text;
}

template <class... ValuesT>
std::string fmtList(const char* format, ValuesT... values)
{
    fmt::dynamic_format_arg_store<fmt::format_context> list;
    (list.push_back(values), ...);
    return fmt::vformat(format, list);
}

template <class... ValuesT>
std::string boostFormat(const char* format, ValuesT... values)
{
    boost::format made(format);
    (void)(made % ... % values);
    return made.str();
}

std::string utf8Of(const QString& text) { return text.toStdString(); }

// The libraries that take a format like printf's. A macro, because some of them want to see a literal.
#define PRINTF_ROWS(workload, FORMAT, ...)                                                                             \
    row(workload, "libc snprintf", [] { return snprintfTwice(FORMAT, __VA_ARGS__); });                                 \
    row(workload, "Abseil", [] { return absl::StrFormat(FORMAT, __VA_ARGS__); });                                      \
    row(workload, "Boost", [] { return boostFormat(FORMAT, __VA_ARGS__); });                                           \
    row(                                                                                                               \
        workload, "GLib",                                                                                              \
        [] { return std::unique_ptr<char, void (*)(void*)>(g_strdup_printf(FORMAT, __VA_ARGS__), g_free); },           \
        [](const auto& made) { return std::string(made.get()); })

#define FMT_ROWS(workload, FORMAT, ...)                                                                                \
    row(workload, "fmt", [] { return fmt::format(fmt::runtime(FORMAT), __VA_ARGS__); });                               \
    row(workload, "fmt list", [] { return fmtList(FORMAT, __VA_ARGS__); })

void messageRows()
{
    const std::string w = "message";
    oursRow(w, "%s: error %d in %s (0x%08x)", [] { return ArgList << v.program << v.code << v.path << v.flags; });
    PRINTF_ROWS(w, "%s: error %d in %s (0x%08x)", v.program, v.code, v.path, v.flags);
    FMT_ROWS(w, "{}: error {} in {} (0x{:08x})", v.program, v.code, v.path, v.flags);
    row(
        w, "Qt asprintf",
        [] { return QString::asprintf("%s: error %d in %s (0x%08x)", v.program, v.code, v.path, v.flags); }, utf8Of);
    const auto qtArg = [format = QStringLiteral("%1: error %2 in %3 (0x%4)")] {
        return format.arg(QString::fromUtf8(v.program), QString::number(v.code), QString::fromUtf8(v.path))
            .arg(v.flags, 8, 16, QChar('0'));
    };
    row(w, "Qt arg", qtArg, utf8Of);
    row(w, "std stream", [] {
        std::ostringstream out;
        out << v.program << ": error " << v.code << " in " << v.path << " (0x" << std::hex << std::setw(8)
            << std::setfill('0') << v.flags << ')';
        return out.str();
    });
}

void numbersRows()
{
    const std::string w = "five_numbers";
    oursRow(w, "%d %d %d %d %d", [] { return ArgList << v.a << v.b << v.c << v.d << v.e; });
    PRINTF_ROWS(w, "%d %d %d %d %d", v.a, v.b, v.c, v.d, v.e);
    FMT_ROWS(w, "{} {} {} {} {}", v.a, v.b, v.c, v.d, v.e);
    row(
        w, "Qt asprintf", [] { return QString::asprintf("%d %d %d %d %d", v.a, v.b, v.c, v.d, v.e); }, utf8Of);
    row(w, "std stream", [] {
        std::ostringstream out;
        out << v.a << ' ' << v.b << ' ' << v.c << ' ' << v.d << ' ' << v.e;
        return out.str();
    });
}

void textsRows()
{
    const std::string w = "four_texts";
    oursRow(w, "%s/%s on %s is %s", [] { return ArgList << v.path << v.program << v.host << v.state; });
    PRINTF_ROWS(w, "%s/%s on %s is %s", v.path, v.program, v.host, v.state);
    FMT_ROWS(w, "{}/{} on {} is {}", v.path, v.program, v.host, v.state);
    const auto qtArg = [format = QStringLiteral("%1/%2 on %3 is %4")] {
        return format.arg(QString::fromUtf8(v.path), QString::fromUtf8(v.program), QString::fromUtf8(v.host),
                          QString::fromUtf8(v.state));
    };
    row(w, "Qt arg", qtArg, utf8Of);
    row(w, "std stream", [] {
        std::ostringstream out;
        out << v.path << '/' << v.program << " on " << v.host << " is " << v.state;
        return out.str();
    });
}

void positionalRows()
{
    const std::string w = "positional";
    oursRow(w, "%3$s: '%1$s' failed on %2$s with %4$d, '%1$s' is kept",
            [] { return ArgList << v.path << v.host << v.program << v.code; });
    PRINTF_ROWS(w, "%3$s: '%1$s' failed on %2$s with %4$d, '%1$s' is kept", v.path, v.host, v.program, v.code);
    FMT_ROWS(w, "{2}: '{0}' failed on {1} with {3}, '{0}' is kept", v.path, v.host, v.program, v.code);
    const auto qtArg = [format = QStringLiteral("%3: '%1' failed on %2 with %4, '%1' is kept")] {
        return format.arg(QString::fromUtf8(v.path), QString::fromUtf8(v.host), QString::fromUtf8(v.program),
                          QString::number(v.code));
    };
    row(w, "Qt arg", qtArg, utf8Of);
}

// 1 KB of text with eight values in it.
#define PARAGRAPH                                                                                                      \
    " The agent has checked its configuration and found settings that differ from the policy of the server. The "      \
    "settings that follow were taken over, the others stay as they are until the next inventory run."
#define TEMPLATE(S, D, X)                                                                                              \
    "Module " S " reports:" PARAGRAPH " Host: " S ", path: " S ", line " D "." PARAGRAPH " State: " S ", code " D      \
    " (" X ")." PARAGRAPH PARAGRAPH " Retries left: " D "."

void templateRows()
{
    const std::string w = "template_1k";
    oursRow(w, TEMPLATE("%s", "%d", "%x"),
            [] { return ArgList << v.program << v.host << v.path << v.line << v.state << v.code << v.flags << v.b; });
    PRINTF_ROWS(w, TEMPLATE("%s", "%d", "%x"), v.program, v.host, v.path, v.line, v.state, v.code, v.flags, v.b);
    FMT_ROWS(w, TEMPLATE("{}", "{}", "{:x}"), v.program, v.host, v.path, v.line, v.state, v.code, v.flags, v.b);
    const auto qt = [] {
        return QString::asprintf(TEMPLATE("%s", "%d", "%x"), v.program, v.host, v.path, v.line, v.state, v.code,
                                 v.flags, v.b);
    };
    row(w, "Qt asprintf", qt, utf8Of);
}

}   // namespace

void registerRows()
{
    messageRows();
    numbersRows();
    textsRows();
    positionalRows();
    templateRows();
}
