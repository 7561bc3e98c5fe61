// format.h: the formatting engine for who has a place of their own for the text.
//
// Thread safety: any thread; an output is unlocked.
#ifndef TVXCMN_STRING_IMPL_FORMAT_H
#define TVXCMN_STRING_IMPL_FORMAT_H

#include "arglist.h"

class FormatOutputC;

// Appends what StringC::format makes of a format in the system's encoding and a list. `error` is the errno
// that "%!" tells.
void formatTo(FormatOutputC& out, const char* format, const ArgListC& args, int error);

#endif   // TVXCMN_STRING_IMPL_FORMAT_H
