// inspection.h: what the agent does with one file.
//
// Thread safety: any thread; what goes wrong is recorded in the calling thread's error buffer and taken out of
// it again.
#ifndef AGENT_INSPECTION_H
#define AGENT_INSPECTION_H

#include "errbuf.h"
#include "stringc.h"

#include <string>

struct FindingT {
    StringC text;    // lines for the user
    ErrSevT worst;   // of what went wrong
};

// Reads the file at `path` and compares it with the checksum that is recorded in `path`.sum, if that exists,
// in the form in which cksum(1) prints it.
FindingT inspect(const std::string& path);

// A path for messages; one that is not UTF-8 is shown as Latin-1.
StringC shownPath(const std::string& path);

#endif   // AGENT_INSPECTION_H
