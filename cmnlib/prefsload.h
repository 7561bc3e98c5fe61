// prefsload.h: loading a preference file whose bytes are there already.
//
// For those who have the bytes from elsewhere than the file, as a merge has just made them.
//
// Thread safety: unlocked, as the object is.
#ifndef TVXCMN_CMNLIB_PREFSLOAD_H
#define TVXCMN_CMNLIB_PREFSLOAD_H

#include "prefs.h"

#include <string>

class PrefsBytesC {
public:
    // As PrefsC::Load of a file `filename` that holds `text`. Cannot fail unless `exit_on_parse_error`.
    static bool load(PrefsC& prefs, std::string text, const char* filename, bool exit_on_parse_error = false,
                     bool continuation = false);
};

#endif   // TVXCMN_CMNLIB_PREFSLOAD_H
