// commandline.h: the command lines of the tools, which all know --help, --version and --json, and their ends.
#ifndef TOOLS_COMMANDLINE_H
#define TOOLS_COMMANDLINE_H

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

struct ToolT {
    const char* name;
    const char* usage;
    const char* help;   // what --help prints behind it
};

struct CommandLineT {
    std::vector<std::string> words;                   // what is no option
    std::multimap<std::string, std::string> values;   // of the options, in their order; "" of one that has none
    bool isJson = false;

    // The last one.
    std::string valueOf(const std::string& option, const char* otherwise = "") const
    {
        const auto behind = values.upper_bound(option);
        return values.count(option) > 0 ? std::prev(behind)->second : otherwise;
    }
};

// Exit statuses of every tool.
const int STATUS_USAGE = 2;
const int STATUS_UNWRITABLE = 4;   // also when what the tool prints cannot be written

inline int wrongUse(const ToolT& tool)
{
    std::fputs(tool.usage, stderr);
    return STATUS_USAGE;
}

typedef std::initializer_list<std::string_view> OptionNamesT;

// Takes words apart. Options have a value (`valued`), behind them or, for long ones, behind a "="; or they have none
// (`plain`, and --json). Words behind "--" are none. False for wrong use.
inline bool takeWords(const std::vector<std::string>& words, OptionNamesT valued, OptionNamesT plain,
                      CommandLineT& line)
{
    const auto isOneOf = [](OptionNamesT names, std::string_view word) {
        return std::find(names.begin(), names.end(), word) != names.end();
    };
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        const size_t equals = word.compare(0, 2, "--") == 0 ? word.find('=') : std::string::npos;
        const std::string option = word.substr(0, equals);
        if (word.size() < 2 || word[0] != '-') {
            line.words.push_back(word);
        } else if (word == "--") {
            line.words.insert(line.words.end(), words.begin() + static_cast<long>(i) + 1, words.end());
            return true;
        } else if (word == "--json") {
            line.isJson = true;
        } else if (isOneOf(plain, word)) {
            line.values.emplace(word, "");
        } else if (!isOneOf(valued, option) || (equals == std::string::npos && i + 1 == words.size())) {
            return false;
        } else {
            line.values.emplace(option, equals != std::string::npos ? word.substr(equals + 1) : words[++i]);
        }
    }
    return true;
}

// Takes a command line apart. False when that was all there is to do: then `status` is the exit status.
inline bool takeCommandLine(const ToolT& tool, int argc, char** argv, OptionNamesT valued, OptionNamesT plain,
                            CommandLineT& line, int& status)
{
    const std::vector<std::string> words(argv + 1, argv + argc);
    status = 0;
    const auto end = std::find(words.begin(), words.end(), "--");
    if (std::find(words.begin(), end, "--help") != end) {
        std::printf("%s%s", tool.usage, tool.help);
    } else if (std::find(words.begin(), end, "--version") != end) {
        std::printf("%s " TVXCMN_VERSION "\n", tool.name);
    } else if (takeWords(words, valued, plain, line)) {
        return true;
    } else {
        status = wrongUse(tool);
    }
    return false;
}

// A tool from its command line to its exit status, which is that of `run(line)` if all could be printed.
template <class RunT>
int runTool(const ToolT& tool, int argc, char** argv, OptionNamesT valued, OptionNamesT plain, RunT run)
{
    CommandLineT line;
    int status;
    if (takeCommandLine(tool, argc, argv, valued, plain, line, status)) status = run(line);
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
    std::fprintf(stderr, "%s: standard output: %s\n", tool.name, std::strerror(errno));
    return STATUS_UNWRITABLE;
}

#endif   // TOOLS_COMMANDLINE_H
