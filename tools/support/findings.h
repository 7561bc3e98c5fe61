// findings.h: what tools find wrong in files, and how they print it.
#ifndef TOOLS_FINDINGS_H
#define TOOLS_FINDINGS_H

#include "jsontext.h"

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

struct FindingT {
    std::string file;
    size_t line;
    size_t column;   // in bytes, from 1
    std::string message;
};

// Writes "FILE:LINE:COLUMN: what" for each, or an array of JSON.
inline void printFindings(std::FILE* to, const std::vector<FindingT>& findings, bool isJson)
{
    const char* separator = "[\n ";
    for (const FindingT& finding : findings) {
        if (isJson) {
            std::fprintf(to, "%s{\"file\": %s, \"line\": %zu, \"column\": %zu, \"message\": %s}", separator,
                         jsonOf(finding.file).c_str(), finding.line, finding.column, jsonOf(finding.message).c_str());
            separator = ",\n ";
        } else {
            std::fprintf(to, "%s:%zu:%zu: %s\n", finding.file.c_str(), finding.line, finding.column,
                         finding.message.c_str());
        }
    }
    if (isJson) std::fputs(findings.empty() ? "[]\n" : "\n]\n", to);
}

#endif   // TOOLS_FINDINGS_H
