// textrepair.h: texts from outside (messages of the system, paths, other people's modules), which may be
// any bytes. Reading them as UTF-8 would be an assertion, and nobody outside should be able to end the process.
//
// Thread safety: pure function, any thread.
#ifndef TVXCMN_STRING_TEXTREPAIR_H
#define TVXCMN_STRING_TEXTREPAIR_H

#include "stringc.h"

#include <string_view>

// The bytes as a text; each one that is no part of well-formed UTF-8 becomes U+FFFD.
StringC repairedText(std::string_view bytes);

#endif   // TVXCMN_STRING_TEXTREPAIR_H
