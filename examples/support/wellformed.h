// wellformed.h: whether bytes from outside may become a StringC.
//
// Malformed text is a broken promise to the library and ends the process. A program that reads what
// others wrote therefore looks first.
#ifndef EXAMPLES_WELLFORMED_H
#define EXAMPLES_WELLFORMED_H

#include <cstddef>
#include <string>

// The offset of the first byte that does not belong to a whole character in `encoding` (one of the
// names in stringc.h); the size of `bytes` when there is none.
size_t wellFormedPrefix(const std::string& bytes, const char* encoding);

#endif   // EXAMPLES_WELLFORMED_H
