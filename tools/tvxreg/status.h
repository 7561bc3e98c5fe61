// status.h: how a call ends, and what it says then.
#ifndef TVXREG_STATUS_H
#define TVXREG_STATUS_H

#include "../support/commandline.h"   // the statuses of every tool

#include <cstdio>
#include <string>

const int STATUS_DONE = 0;
const int STATUS_FINDINGS = 1;     // or not found
const int STATUS_UNREADABLE = 3;   // or not to be understood
const int STATUS_LOCKED = 5;

// Tells what is the matter with `what`; the status.
inline int failed(int status, const std::string& what, const std::string& why)
{
    std::fprintf(stderr, "tvxreg: %s: %s\n", what.c_str(), why.c_str());
    return status;
}

#endif   // TVXREG_STATUS_H
