// tvxreg: the registry at the command line.
//
// Exit status: 0 done; 1 not found, or findings; 2 wrong use; 3 a file cannot be read or understood; 4 a file cannot
// be written; 5 a file is locked.

#include "../support/commandline.h"
#include "../support/inputfile.h"
#include "changes.h"
#include "inilines.h"
#include "mounts.h"
#include "show.h"
#include "status.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <unistd.h>

namespace {

const char USAGE[] = "usage: tvxreg get [--json] KEY NAME [--default TEXT] [--type string|dword|bool]\n"
                     "       tvxreg set [--wait SECONDS] KEY NAME VALUE [--type string|dword]\n"
                     "       tvxreg del [--wait SECONDS] KEY [NAME] [-r]\n"
                     "       tvxreg ls [--json] KEY\n"
                     "       tvxreg tree [--json] [KEY]\n"
                     "       tvxreg find [--json] PATTERN [KEY]\n"
                     "       tvxreg where [--json] KEY NAME\n"
                     "       tvxreg export [--json] KEY\n"
                     "       tvxreg import [--wait SECONDS] FILE\n"
                     "       tvxreg batch [--wait SECONDS] FILE|-\n"
                     "       tvxreg check [--json] FILE...\n"
                     "       tvxreg --help | --version\n";
const char HELP[] =
    "\n"
    "Options of all commands:\n"
    "  -i 'KEY=FILE'    the INI file holds what lies below the key; may be repeated\n"
    "  --mounts FILE    a file with lines KEY=FILE; without -i and --mounts, TVXREG_MOUNTS names one\n"
    "  --color WHEN     auto, always or never; NO_COLOR in the environment means never\n"
    "\n"
    "A KEY begins with a root, like HKLM or HKEY_LOCAL_MACHINE; its parts are joined by backslashes, or by\n"
    "slashes when there is no backslash in it. A PATTERN has * for any text and ? for one character, and is\n"
    "held against names of keys and values, and against values, without regard to case.\n"
    "\n"
    "set keeps text without blanks at its ends; a dword is a number with the letter l behind it in the file.\n"
    "del deletes a value, or a key, with -r also one that holds values and keys. export writes an INI file\n"
    "whose sections are keys, and import makes what such a file holds. batch makes the changes that the lines\n"
    "of a file name (set and del, without \"tvxreg\"; quotes hold words together; # begins a comment), all or\n"
    "none, and saves each file once. They wait 2 seconds, or as --wait says, for a file that is locked to\n"
    "come free; should another process then lock it first, the save itself waits for up to 20 seconds.\n"
    "\n"
    "check prints what programs skip in INI files, what the next change would drop from them, and what is\n"
    "not UTF-8, as FILE:LINE:COLUMN: what; columns count bytes. where prints FILE:LINE of a value.\n"
    "\n"
    "Exit status: 0 done, 1 not found or findings, 2 wrong use, 3 a file cannot be read or understood,\n"
    "4 a file cannot be written, 5 a file is locked. A change that fails leaves its file as it was.\n";

const ToolT TOOL = {"tvxreg", USAGE, HELP};

const OptionNamesT VALUED = {"-i", "--mounts", "--color", "--wait", "--default", "--type"};
const OptionNamesT PLAIN = {"-r"};

struct CommandT {
    const char* name;
    size_t least;   // how many words it takes
    size_t most;
    bool isChange;
    const char* options;   // of its own, each with a blank behind it
};
const CommandT COMMANDS[] = {
    {"get", 2, 2, false, "--json --default --type "},
    {"set", 3, 3, true, "--wait --type "},
    {"del", 1, 2, true, "--wait -r "},
    {"ls", 1, 1, false, "--json "},
    {"tree", 0, 1, false, "--json "},
    {"find", 1, 2, false, "--json "},
    {"where", 2, 2, false, "--json "},
    {"export", 1, 1, false, "--json "},
    {"import", 1, 1, true, "--wait "},
    {"batch", 1, 1, true, "--wait "},
    {"check", 1, SIZE_MAX, false, "--json "},
};
const char GLOBAL_OPTIONS[] = "-i --mounts --color ";

// ---- the command line -------------------------------------------------------------------------------

// The command that the line holds. Null when there is none such, with these words and options.
const CommandT* commandOf(const CommandLineT& line, const char* others)
{
    const std::string name = line.words.empty() ? "" : line.words[0];
    const auto command = std::find_if(std::begin(COMMANDS), std::end(COMMANDS),
                                      [&](const CommandT& known) { return name == known.name; });
    if (command == std::end(COMMANDS)) return nullptr;
    const std::string options = std::string(command->options) + others;
    const bool areKnown = std::all_of(line.values.begin(), line.values.end(), [&](const auto& option) {
        return options.find(option.first + " ") != std::string::npos;
    });
    const size_t count = line.words.size() - 1;
    if (!areKnown || (line.isJson && options.find("--json ") == std::string::npos)) return nullptr;
    return count >= command->least && count <= command->most ? command : nullptr;
}

int readMounts(const CommandLineT& line, MountsC& mounts)
{
    const auto named = line.values.equal_range("-i");
    for (auto text = named.first; text != named.second; ++text) {
        const std::string fault = mounts.add(text->second, "");
        if (!fault.empty()) return failed(STATUS_USAGE, "-i '" + text->second + "'", fault);
    }
    const char* const usual = std::getenv("TVXREG_MOUNTS");
    const std::string path = line.valueOf("--mounts", mounts.all().empty() && usual != nullptr ? usual : "");
    const int status = path.empty() ? STATUS_DONE : mounts.addFile(path);
    if (status != STATUS_DONE || !mounts.all().empty()) return status;
    return failed(STATUS_USAGE, line.words[0], "no INI file is named: -i 'KEY=FILE', --mounts or TVXREG_MOUNTS");
}

// Empty after it has told, `from` where, that the word names no key.
std::string keyArgument(const std::string& word, const std::string& from)
{
    std::string key = keyOf(word);
    if (key.empty())
        failed(STATUS_USAGE, from + word, "the key does not begin with a root, like HKLM or HKEY_LOCAL_MACHINE");
    return key;
}

// ---- changes ----------------------------------------------------------------------------------------

bool isDword(const std::string& text)
{
    char* end = nullptr;
    errno = 0;
    std::strtol(text.c_str(), &end, 10);
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos && errno == 0;
}

// Whether a command, with words and options that it takes, describes one change.
bool isChange(const CommandLineT& line)
{
    const std::string type = line.valueOf("--type", "string");
    if (line.words[0] == "set") return type == "string" || type == "dword";
    return line.words[0] == "del" && (line.words.size() == 2 || line.values.count("-r") == 0);
}

// The change that a command line, or a line of a batch, describes; it is known to be one. The status.
int readChange(const CommandLineT& line, const std::string& from, ChangeT& change)
{
    const std::vector<std::string>& words = line.words;
    const bool isSet = words[0] == "set";
    const bool isTree = line.values.count("-r") > 0;
    const std::string type = line.valueOf("--type", "string");
    change.key = keyArgument(words[1], from);
    if (change.key.empty()) return STATUS_USAGE;
    change.from = from;
    change.kind = isSet              ? ChangeT::SET
                  : words.size() > 2 ? ChangeT::DELETE_VALUE
                  : isTree           ? ChangeT::DELETE_TREE
                                     : ChangeT::DELETE_KEY;
    if (words.size() > 2) change.name = words[2];
    if (words.size() > 2 && change.name.empty()) return failed(STATUS_USAGE, from + words[1], "a value needs a name");
    if (!isSet) return STATUS_DONE;
    change.value = trimmed(words[3]);
    if (type != "dword") return STATUS_DONE;
    if (!isDword(change.value)) return failed(STATUS_USAGE, from + words[3], "no number from 0 to 2^63-1");
    change.value = std::to_string(std::strtol(change.value.c_str(), nullptr, 10)) + 'l';   // 010 would be octal
    return STATUS_DONE;
}

// One line of a batch.
int readBatchLine(const std::string& text, const std::string& place, std::vector<ChangeT>& changes)
{
    std::vector<std::string> words;
    CommandLineT line;
    if (!splitWords(text, words)) return failed(STATUS_UNREADABLE, place, "a quote is not closed");
    const bool isTaken = takeWords(words, VALUED, PLAIN, line) && line.values.count("--wait") == 0;
    const CommandT* const command = isTaken ? commandOf(line, "") : nullptr;
    if (command == nullptr || !isChange(line) || text.find('\0') != std::string::npos) {
        return failed(STATUS_UNREADABLE, place,
                      "no change: set KEY NAME VALUE [--type string|dword], del KEY [NAME] or del KEY -r");
    }
    const bool isRead = readChange(line, place + ": ", changes.emplace_back()) == STATUS_DONE;
    return isRead ? STATUS_DONE : STATUS_UNREADABLE;
}

int readBatch(const std::string& path, std::vector<ChangeT>& changes)
{
    std::string content;
    if (!(path == "-" ? readRest(stdin, content) : readFile(path, content))) {
        return failed(STATUS_UNREADABLE, path, std::strerror(errno));
    }
    std::string_view rest = content;
    std::string_view line;
    int status = STATUS_DONE;
    for (size_t number = 1; status == STATUS_DONE && nextLine(rest, line); ++number) {
        const std::string text(trimmed(line));
        if (text.empty() || text[0] == '#') continue;
        status = readBatchLine(text, path + ":" + std::to_string(number), changes);
    }
    return status;
}

int change(const CommandLineT& line, const MountsC& mounts)
{
    char* end = nullptr;
    const std::string wait = line.valueOf("--wait", "2");
    const double patience = std::strtod(wait.c_str(), &end);
    if (wait.empty() || *end != '\0' || !(patience >= 0 && patience <= 1e6)) return wrongUse(TOOL);

    std::vector<ChangeT> changes;
    const int status = line.words[0] == "batch"    ? readBatch(line.words[1], changes)
                       : line.words[0] == "import" ? readImport(line.words[1], changes)
                       : isChange(line)            ? readChange(line, "", changes.emplace_back())
                                                   : wrongUse(TOOL);
    return status == STATUS_DONE ? applyChanges(mounts, changes, patience) : status;
}

// ---- the commands -----------------------------------------------------------------------------------

int check(const CommandLineT& line, StyleT style)
{
    int status = STATUS_DONE;
    std::vector<FindingT> findings;
    for (size_t i = 1; i < line.words.size(); ++i) {
        const std::string& path = line.words[i];
        std::string content;
        if (readFile(path, content)) {
            for (FindingT& finding : checkIni(path, content)) findings.push_back(std::move(finding));
        } else {
            status = failed(STATUS_UNREADABLE, path, std::strerror(errno));
        }
    }
    showFindings(findings, style);
    return status != STATUS_DONE || findings.empty() ? status : STATUS_FINDINGS;
}

int get(const CommandLineT& line, const MountsC& mounts, const std::string& key, StyleT style)
{
    const std::string type = line.valueOf("--type", "string");
    if (type != "string" && type != "dword" && type != "bool") return wrongUse(TOOL);
    const ValueTypeE wanted = type == "string"  ? ValueTypeE::STRING
                              : type == "dword" ? ValueTypeE::DWORD
                                                : ValueTypeE::BOOL;
    std::optional<std::string> fallback;
    if (line.values.count("--default") > 0) fallback = line.valueOf("--default");
    return showValue(mounts, key, line.words[2], wanted, fallback, style);
}

int show(const CommandLineT& line, const MountsC& mounts, StyleT style)
{
    const std::string& command = line.words[0];
    const size_t place = command == "find" ? 2 : 1;   // of the key among the words
    const bool hasKey = line.words.size() > place;
    const std::string key = hasKey ? keyArgument(line.words[place], "") : "";
    if (hasKey && key.empty()) return STATUS_USAGE;
    if (command == "get") return get(line, mounts, key, style);
    if (command == "where") return showOrigin(mounts, key, line.words[2], style);
    if (command == "ls") return showKey(mounts, key, style);
    if (command == "tree") return showTree(mounts, key, style);
    if (command == "export") return showExport(mounts, key, style);
    return showMatches(mounts, key, line.words[1], style);
}

int run(const CommandLineT& line)
{
    const CommandT* const command = commandOf(line, GLOBAL_OPTIONS);
    const std::string color = line.valueOf("--color", "auto");
    if (command == nullptr || (color != "auto" && color != "always" && color != "never")) return wrongUse(TOOL);
    const char* const noColor = std::getenv("NO_COLOR");
    const bool isWelcome = (noColor == nullptr || *noColor == '\0') && isatty(STDOUT_FILENO) == 1;
    const StyleT style = {line.isJson, color == "always" || (color == "auto" && isWelcome)};
    if (line.words[0] == "check") return check(line, style);

    MountsC mounts;
    const int status = readMounts(line, mounts);
    if (status != STATUS_DONE) return status;
    return command->isChange ? change(line, mounts) : show(line, mounts, style);
}

}   // namespace

int main(int argc, char** argv) { return runTool(TOOL, argc, argv, VALUED, PLAIN, run); }
