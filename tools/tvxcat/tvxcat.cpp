// tvxcat: builds message catalogs out of sources, and tells what is in them.
//
// Exit status: 0 done; 1 findings, or not found; 2 wrong use; 3 a file cannot be read or understood; 4 a file cannot
// be written.

#include "../support/commandline.h"
#include "../support/inputfile.h"
#include "../support/jsontext.h"
#include "../support/outputfile.h"
#include "../support/utf8text.h"
#include "catalogfile.h"
#include "cataloglint.h"
#include "catalogsource.h"
#include "messagenumber.h"

#include "errorapi.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace {

const char USAGE[] = "usage: tvxcat build SOURCE... -o CATALOG\n"
                     "       tvxcat lint [--json] SOURCE... [--against SOURCE]\n"
                     "       tvxcat header SOURCE\n"
                     "       tvxcat dump [--json] CATALOG\n"
                     "       tvxcat get [--json] CATALOG NUMBER\n"
                     "       tvxcat explain [--json] [--catalog CATALOG] NUMBER\n"
                     "       tvxcat --help | --version\n";
const char HELP[] =
    "\n"
    "build makes one catalog of all sources. lint prints what is wrong in sources, as FILE:LINE:COLUMN: what;\n"
    "columns count bytes. With --against, texts have to take the same arguments as those of another source.\n"
    "header prints a header of C++ with the numbers of all messages.\n"
    "\n"
    "dump prints a source of which build makes the same catalog. get prints the parts of one message; explain\n"
    "does so for the messages of the library itself, and for those of the system. A NUMBER is an error number,\n"
    "like 0xE0CB0010, or a set and a message, like s203m16.\n"
    "\n"
    "Exit status: 0 done, 1 findings or not found, 2 wrong use, 3 a file cannot be read or understood,\n"
    "4 a file cannot be written.\n";

const ToolT TOOL = {"tvxcat", USAGE, HELP};

enum StatusT { STATUS_DONE = 0, STATUS_FINDINGS = 1, STATUS_UNREADABLE = 3 };

// ---- files ------------------------------------------------------------------------------------------

int failed(int status, const std::string& path, const std::string& why)
{
    std::fprintf(stderr, "tvxcat: %s: %s\n", path.c_str(), why.c_str());
    return status;
}

bool readContent(const std::string& path, std::string& content)
{
    if (readFile(path, content)) return true;
    failed(STATUS_UNREADABLE, path, std::strerror(errno));
    return false;
}

// All of the sources that can be read.
bool readSources(const std::vector<std::string>& paths, std::vector<CatalogSourceC>& sources)
{
    bool areAllThere = true;
    for (const std::string& path : paths) {
        std::string content;
        if (readContent(path, content)) {
            sources.emplace_back(path, content);
        } else {
            areAllThere = false;
        }
    }
    return areAllThere;
}

bool readCatalogFile(const std::string& path, std::vector<CatalogMessageT>& messages, std::string& content)
{
    if (!readContent(path, content)) return false;
    const std::string fault = readCatalog(content, messages);
    if (!fault.empty()) failed(STATUS_UNREADABLE, path, fault);
    return fault.empty();
}

// Whether all of the sources are there and make a catalog; otherwise that has been told.
bool readBuildable(const std::vector<std::string>& paths, std::vector<CatalogSourceC>& sources)
{
    if (!readSources(paths, sources)) return false;
    const std::vector<FindingT> faults = buildFaults(sources);
    printFindings(stderr, faults, false);
    return faults.empty();
}

// ---- sources ----------------------------------------------------------------------------------------

int build(const std::vector<std::string>& paths, const std::string& output)
{
    std::vector<CatalogSourceC> sources;
    if (!readBuildable(paths, sources)) return STATUS_UNREADABLE;
    std::vector<CatalogMessageT> messages;
    for (const CatalogSourceC& source : sources) {
        messages.insert(messages.end(), source.messages().begin(), source.messages().end());
    }
    std::sort(messages.begin(), messages.end(),
              [](const CatalogMessageT& a, const CatalogMessageT& b) { return keyOf(a) < keyOf(b); });
    const std::string catalog = catalogOf(messages);
    if (catalog.empty()) return failed(STATUS_UNREADABLE, paths[0], "the texts are more than 4 GiB");
    if (!replaceFile(output, catalog)) return failed(STATUS_UNWRITABLE, output, std::strerror(errno));
    return STATUS_DONE;
}

// In the order of the files, which is that of the command line; the reference comes last.
void sortByPlace(std::vector<FindingT>& findings, const std::vector<std::string>& paths)
{
    const auto placeOf = [&paths](const FindingT& finding) {
        return std::tuple(std::find(paths.begin(), paths.end(), finding.file), finding.line, finding.column);
    };
    std::stable_sort(findings.begin(), findings.end(),
                     [&](const FindingT& a, const FindingT& b) { return placeOf(a) < placeOf(b); });
}

int lint(const std::vector<std::string>& paths, const std::string& against, bool isJson)
{
    std::vector<CatalogSourceC> sources;
    std::vector<CatalogSourceC> references;
    std::vector<std::string> referencePaths;
    if (!against.empty()) referencePaths.push_back(against);
    const bool areSourcesThere = readSources(paths, sources);
    const bool areAllThere = readSources(referencePaths, references) && areSourcesThere;
    std::vector<FindingT> faults = buildFaults(sources);
    const std::vector<FindingT> others = lintFaults(sources, references.empty() ? nullptr : &references[0]);
    faults.insert(faults.end(), others.begin(), others.end());
    for (const CatalogSourceC& reference : references) {
        faults.insert(faults.end(), reference.errors().begin(), reference.errors().end());
    }
    sortByPlace(faults, paths);
    printFindings(stdout, faults, isJson);
    sources.insert(sources.end(), references.begin(), references.end());
    const bool isUnderstood = std::all_of(sources.begin(), sources.end(),
                                          [](const CatalogSourceC& source) { return source.errors().empty(); });
    if (!areAllThere || !isUnderstood) return STATUS_UNREADABLE;
    return faults.empty() ? STATUS_DONE : STATUS_FINDINGS;
}

// The name of a file as an identifier: TVXCMN_MSG_H.
std::string guardOf(const std::string& path)
{
    std::string guard = path.substr(path.rfind('/') + 1) + "_h";
    for (char& ch : guard) {
        const unsigned char byte = static_cast<unsigned char>(ch);
        ch = std::isalnum(byte) != 0 && byte < 0x80 ? static_cast<char>(std::toupper(byte)) : '_';
    }
    return std::isdigit(static_cast<unsigned char>(guard[0])) != 0 ? "M" + guard : guard;
}

int header(const std::string& path)
{
    std::vector<CatalogSourceC> sources;
    if (!readBuildable({path}, sources)) return STATUS_UNREADABLE;
    const std::vector<FindingT> faults = headerFaults(sources[0]);
    printFindings(stderr, faults, false);
    if (!faults.empty()) return STATUS_UNREADABLE;
    const std::string guard = guardOf(path);
    std::printf("// Made by tvxcat; edit the source of the messages instead.\n#ifndef %s\n#define %s\n\n",
                guard.c_str(), guard.c_str());
    for (const SourceMessageT& message : sources[0].messages()) {
        std::printf("constexpr long %s = 0x%lXL;\n", identifierOf(message).c_str(),
                    numberOf(message.set, message.number));
    }
    std::printf("\n#endif   // %s\n", guard.c_str());
    return STATUS_DONE;
}

// ---- catalogs ---------------------------------------------------------------------------------------

// The parts of a text that are shown.
struct ShownT {
    ErrSevT severity;
    std::string problem, reason, solution;
};

const char* nameOf(ErrSevT severity)
{
    static const char* const NAMES[] = {"none", "monitor", "information", "warning", "error", "fatal"};
    return NAMES[severity];
}

// The library reads the text as the default text of a number that no catalog knows.
ShownT shownOf(const std::string& text)
{
    ShownT shown;
    const StringC message = ErrorString(shown.severity, 0, repaired(text).c_str());
    std::vector<std::string> fields = fieldsOf({message.utf8(), message.utf8Bytes()});
    fields.resize(3);
    shown.problem = fields[0];
    shown.reason = fields[1];
    shown.solution = fields[2];
    return shown;
}

std::string objectOf(const CatalogMessageT& message)
{
    const ShownT shown = shownOf(message.text);
    char numbers[128];
    std::snprintf(numbers, sizeof numbers, "{\"number\": \"0x%lx\", \"set\": %u, \"message\": %u, \"severity\": \"%s\"",
                  numberOf(message.set, message.number), message.set, message.number, nameOf(shown.severity));
    return numbers + (", \"problem\": " + jsonOf(shown.problem)) + ", \"reason\": " + jsonOf(shown.reason) +
           ", \"solution\": " + jsonOf(shown.solution) + "}";
}

void printMessage(const CatalogMessageT& message, bool isJson)
{
    if (isJson) {
        std::puts(objectOf(message).c_str());
        return;
    }
    const ShownT shown = shownOf(message.text);
    std::printf("%s 0x%lx, %s\nproblem:  %s\n", labelOf(message).c_str(), numberOf(message.set, message.number),
                nameOf(shown.severity), shown.problem.c_str());
    if (!shown.reason.empty()) std::printf("reason:   %s\n", shown.reason.c_str());
    if (!shown.solution.empty()) std::printf("solution: %s\n", shown.solution.c_str());
}

// Whether the numbers ascend, each of them once.
bool isOrdered(const std::vector<CatalogMessageT>& messages)
{
    return std::adjacent_find(messages.begin(), messages.end(), [](const CatalogMessageT& a, const CatalogMessageT& b) {
               return keyOf(a) >= keyOf(b);
           }) == messages.end();
}

int dump(const std::string& path, bool isJson)
{
    std::vector<CatalogMessageT> messages;
    std::string content;
    if (!readCatalogFile(path, messages, content)) return STATUS_UNREADABLE;
    if (!isJson) {
        std::fputs(sourceOf(messages).c_str(), stdout);
        if (isOrdered(messages) && catalogOf(messages) == content) return STATUS_DONE;
        return failed(STATUS_FINDINGS, path, "laid out in another way than build does: its copy has other bytes");
    }
    const char* separator = "[\n ";
    for (const CatalogMessageT& message : messages) {
        std::printf("%s%s", separator, objectOf(message).c_str());
        separator = ",\n ";
    }
    std::puts(messages.empty() ? "[]" : "\n]");
    return STATUS_DONE;
}

// A message of the system's errors, which need no catalog.
bool findSystemMessage(CatalogMessageT& message)
{
    if (message.set != 0 || strerrorname_np(static_cast<int>(message.number)) == nullptr) return false;
    message.text = strerrordesc_np(static_cast<int>(message.number));
    return true;
}

int get(const std::string& path, const std::string& number, bool isJson)
{
    CatalogMessageT wanted;
    if (!parseNumber(number, wanted.set, wanted.number)) return failed(STATUS_USAGE, number, "no number of a message");
    std::vector<CatalogMessageT> messages;
    std::string content;
    if (!readCatalogFile(path, messages, content)) return STATUS_UNREADABLE;
    for (const CatalogMessageT& message : messages) {
        if (message.set != wanted.set || message.number != wanted.number) continue;
        printMessage(message, isJson);
        return STATUS_DONE;
    }
    if (!findSystemMessage(wanted)) return failed(STATUS_FINDINGS, path, "no message " + labelOf(wanted));
    printMessage(wanted, isJson);
    return STATUS_DONE;
}

// The library's own catalog: beside the folder of this program, or where it was to be installed.
std::string ownCatalog()
{
    char program[4096];
    const ssize_t size = readlink("/proc/self/exe", program, sizeof program);
    const std::string path(program, size > 0 ? static_cast<size_t>(size) : 0);
    const std::string beside = path.substr(0, path.rfind('/') + 1) + "../share/tvxcmn/lib/allcat.cat";
    return access(beside.c_str(), R_OK) == 0 ? beside : TVXCAT_CATALOG;
}

// The library's own catalog has none of the system's messages, which are told without it.
int explain(const std::string& number, bool isJson)
{
    CatalogMessageT wanted;
    if (!parseNumber(number, wanted.set, wanted.number) || !findSystemMessage(wanted))
        return get(ownCatalog(), number, isJson);
    printMessage(wanted, isJson);
    return STATUS_DONE;
}

// ---- the command line -------------------------------------------------------------------------------

int run(const CommandLineT& line)
{
    if (line.words.size() < 2) return wrongUse(TOOL);
    const std::string& command = line.words[0];
    const std::vector<std::string> words(line.words.begin() + 1, line.words.end());
    const auto takes = [&](const char* option) { return line.values.size() == line.values.count(option); };

    const std::string output = line.valueOf("-o");
    if (command == "build" && takes("-o") && !output.empty() && !line.isJson) return build(words, output);
    if (command == "lint" && takes("--against")) return lint(words, line.valueOf("--against"), line.isJson);
    const std::string catalog = line.valueOf("--catalog");
    if (command == "explain" && takes("--catalog") && words.size() == 1)
        return catalog.empty() ? explain(words[0], line.isJson) : get(catalog, words[0], line.isJson);
    if (!line.values.empty()) return wrongUse(TOOL);
    if (command == "header" && words.size() == 1 && !line.isJson) return header(words[0]);
    if (command == "dump" && words.size() == 1) return dump(words[0], line.isJson);
    if (command == "get" && words.size() == 2) return get(words[0], words[1], line.isJson);
    return wrongUse(TOOL);
}

}   // namespace

int main(int argc, char** argv) { return runTool(TOOL, argc, argv, {"-o", "--against", "--catalog"}, {}, run); }
