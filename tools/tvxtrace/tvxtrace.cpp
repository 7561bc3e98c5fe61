// tvxtrace: checks trace profiles, and tells what one does to a class.
//
// Exit status: 0 nothing found; 1 findings; 2 wrong use; 3 a profile cannot be read; 4 the answer
// cannot be written.

#include "../support/commandline.h"
#include "../support/jsontext.h"
#include "explain.h"
#include "profilelint.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

const char USAGE[] = "usage: tvxtrace lint [--json] PROFILE...\n"
                     "       tvxtrace explain [--json] PROFILE CLASS\n"
                     "       tvxtrace --help | --version\n";
const char HELP[] =
    "\n"
    "lint prints what is wrong in trace profiles, as FILE:LINE:COLUMN: what; columns count bytes. It finds\n"
    "unknown attributes, values that mean nothing, lines of more than 255 bytes, wildcards that match\n"
    "nothing, and classes that are named twice.\n"
    "\n"
    "explain prints whether a class is on under a profile, and the classes from its root down to it: their\n"
    "detail increments, whether the profile turns them on or off, and how much detail is left below them.\n"
    "A class that is not set follows its parent while there is detail left (0 or more).\n"
    "\n"
    "Exit status: 0 nothing found, 1 findings, 2 wrong use, 3 a profile cannot be read,\n"
    "4 the answer cannot be written.\n";

const ToolT TOOL = {"tvxtrace", USAGE, HELP};

enum StatusT { STATUS_CLEAN = 0, STATUS_FINDINGS = 1, STATUS_UNREADABLE = 3 };

typedef std::unique_ptr<std::FILE, int (*)(std::FILE*)> FileT;

StatusT unreadable(const std::string& path)
{
    std::fprintf(stderr, "tvxtrace: %s: %s\n", path.c_str(), std::strerror(errno));
    return STATUS_UNREADABLE;
}

// ---- lint -------------------------------------------------------------------------------------------

StatusT lint(const std::vector<std::string>& paths, bool isJson)
{
    std::vector<FindingT> findings;
    bool isReadable = true;
    for (const std::string& path : paths) {
        const FileT file(std::fopen(path.c_str(), "re"), std::fclose);
        if (file != nullptr) {
            const std::vector<FindingT> more = lintProfile(path, file.get());
            findings.insert(findings.end(), more.begin(), more.end());
        }
        if (file != nullptr && std::ferror(file.get()) == 0) continue;
        unreadable(path);
        isReadable = false;
    }
    printFindings(stdout, findings, isJson);
    if (!isReadable) return STATUS_UNREADABLE;
    return findings.empty() ? STATUS_CLEAN : STATUS_FINDINGS;
}

// ---- explain ----------------------------------------------------------------------------------------

void printJson(const ExplanationT& explanation)
{
    const ChainLinkT& last = explanation.chain.back();
    std::printf("{\"class\": %s, \"on\": %s, \"mask\": %d, \"max_detail\": %d, \"chain\": [", jsonOf(last.name).c_str(),
                last.isOn ? "true" : "false", last.isOn ? 1 : 0, explanation.maxDetail);
    const char* separator = "\n ";
    for (const ChainLinkT& link : explanation.chain) {
        std::printf("%s{\"class\": %s, \"increment\": %d, \"set\": \"%s\", \"left\": %d, \"on\": %s}", separator,
                    jsonOf(link.name).c_str(), link.increment, link.set, link.left, link.isOn ? "true" : "false");
        separator = ",\n ";
    }
    std::puts("\n]}");
}

void printText(const ExplanationT& explanation)
{
    const ChainLinkT& last = explanation.chain.back();
    std::printf("%s is %s, mask 0x%x, with max_detail %d\n", last.name.c_str(), last.isOn ? "on" : "off",
                last.isOn ? 1U : 0U, explanation.maxDetail);
    size_t width = std::strlen("class");
    for (const ChainLinkT& link : explanation.chain) width = std::max(width, link.name.size());
    std::printf("  %-*s  increment  set       left  on\n", static_cast<int>(width), "class");
    for (const ChainLinkT& link : explanation.chain) {
        std::printf("  %-*s  %-9d  %-8s  %-4s  %s\n", static_cast<int>(width), link.name.c_str(), link.increment,
                    link.set, link.left < 0 ? "-" : std::to_string(link.left).c_str(), link.isOn ? "yes" : "no");
    }
}

StatusT explain(const std::string& path, const std::string& traceClass, bool isJson)
{
    struct stat info = {};
    const FileT file(std::fopen(path.c_str(), "re"), std::fclose);
    if (file == nullptr || (std::getc(file.get()) == EOF && std::ferror(file.get()) != 0)) return unreadable(path);
    errno = EINVAL;   // as the library, which reads it again
    if (fstat(fileno(file.get()), &info) != 0 || !S_ISREG(info.st_mode)) return unreadable(path);
    const ExplanationT explanation = explainClass(path, traceClass);
    if (isJson) {
        printJson(explanation);
    } else {
        printText(explanation);
    }
    return STATUS_CLEAN;
}

int run(const CommandLineT& line)
{
    const std::vector<std::string>& words = line.words;
    if (words.size() > 1 && words[0] == "lint") return lint({words.begin() + 1, words.end()}, line.isJson);
    if (words.size() == 3 && words[0] == "explain") return explain(words[1], words[2], line.isJson);
    return wrongUse(TOOL);
}

}   // namespace

int main(int argc, char** argv) { return runTool(TOOL, argc, argv, {}, {}, run); }
