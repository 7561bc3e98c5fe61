// formathelpers.h: what the tests of formatting share.
#ifndef TVXCMN_TESTS_FORMATHELPERS_H
#define TVXCMN_TESTS_FORMATHELPERS_H

#include "arglist.h"
#include "string/stringmodel.h"
#include "support/timezone.h"

#include <cstdarg>
#include <string>

// The result through both doors, which must agree; what the callback saw stands behind a '|' if not.
inline std::string formatted(const std::string& fmt, const ArgListC& args)
{
    const StringC format(fmt.data(), fmt.size(), StringC::CC_UTF8);
    std::string emitted;
    StringC::format([](void* ctx, UCS4 ch) { *static_cast<std::string*>(ctx) += utf8Of(ch); }, &emitted, format, args);
    const StringC body = format % args;
    const std::string text = stringmodel::bytesOf(body);
    return text == emitted ? text : text + "|" + emitted;
}

inline ArgListC argsOf(const char* fmt, ...)
{
    std::va_list ap;
    va_start(ap, fmt);
    const ArgListC args = StringC::formatArgs(StringC(fmt), ap);
    va_end(ap);
    return args;
}

#endif   // TVXCMN_TESTS_FORMATHELPERS_H
