// profilelint.h: finds what is wrong in a trace profile.
#ifndef TVXTRACE_PROFILELINT_H
#define TVXTRACE_PROFILELINT_H

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

struct FindingT {
    int line;
    size_t column;   // in bytes, from 1
    std::string message;
};

// All findings, in the order of the lines. The file is read to its end, or to where reading fails.
std::vector<FindingT> lintProfile(std::FILE* file);

#endif   // TVXTRACE_PROFILELINT_H
