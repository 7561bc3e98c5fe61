// profilelint.h: finds what is wrong in a trace profile.
#ifndef TVXTRACE_PROFILELINT_H
#define TVXTRACE_PROFILELINT_H

#include "../support/findings.h"

#include <cstdio>
#include <string>
#include <vector>

// All findings, in the order of the lines. The file is read to its end, or to where reading fails.
std::vector<FindingT> lintProfile(const std::string& path, std::FILE* file);

#endif   // TVXTRACE_PROFILELINT_H
