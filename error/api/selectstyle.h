// selectstyle.h: what a message text says about itself, whether it comes from a catalog or from a caller
// (errorapi.h shows the forms).
//
//     form      text                                          handed on
//     plain     anything that begins neither with { nor \1    the text
//     marked    { letters } [one blank or tab] text           the text
//     variants  \1 variant [\1 variant]...                    problem \1 reason \1 solution of one variant
//     variant   style \1 { letters } \1 problem \1 reason \1 solution
//
// A variant is for everybody when its style has no name, and texts are always asked for without a style;
// the last such variant counts. Fields that the last variant lacks are empty.
//
// Thread safety: pure function, any thread.
#ifndef TVXCMN_ERROR_SELECTSTYLE_H
#define TVXCMN_ERROR_SELECTSTYLE_H

#include "errbuf.h"

#include <string>
#include <string_view>

// The part of `text` that is the message, and its severity: an error unless the letters say otherwise.
// Empty when there are variants but none for everybody. That of a variant is put together in `room`, which is empty
// before. A list of variants holds no zero byte
// ("(buf == ep && *buf == '\0') || buf[-1] == '\x01'"); otherwise it ends there.
std::string_view selectStyle(std::string_view text, ErrSevT& sev, std::string& room);

#endif   // TVXCMN_ERROR_SELECTSTYLE_H
