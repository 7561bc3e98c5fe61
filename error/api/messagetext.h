// messagetext.h: from the bytes of a message text to what is shown of it.
//
// Thread safety: any thread.
#ifndef TVXCMN_ERROR_MESSAGETEXT_H
#define TVXCMN_ERROR_MESSAGETEXT_H

#include "errbuf.h"

#include <string_view>

// The message of a text out of a catalog, which may hold any bytes, and its severity (selectstyle.h).
StringC catalogMessage(std::string_view text, ErrSevT& sev);

// The same of a text that a caller brought along, which is UTF-8; null stands for the empty text.
StringC defaultMessage(const char* def_str, ErrSevT& sev);

#endif   // TVXCMN_ERROR_MESSAGETEXT_H
