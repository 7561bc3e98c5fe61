#include "errorapi.h"

#include "assertfatal.h"
#include "cmnlib/errnokeeper.h"
#include "errcatalog.h"
#include "error/api/messagetext.h"
#include "tvxcmn.h"

#include <utility>

namespace {

bool isNoText(const char* text) { return text == nullptr || *text == '\0'; }

StringC messageOf(ErrSevT& sev, ErrorT err, const char* def_str)
{
    return ErrGetCat()->getMessage(sev, err, def_str, nullptr);
}

// `text` with the arguments put in, while errno is what the caller came with.
StringC formatted(const StringC& text, ArgListC arglist, const ErrnoKeeperC& callers)
{
    callers.restore();
    return StringC::format(text, std::move(arglist));
}

void record(ErrorT err, ErrSevT sev, StringC&& text)
{
    if (sev == ERR_SEV_NONE) return;
    ErrBufI* const buf = getErrBuf(2);
    if (TVX_CHECK(buf != nullptr, "buf != 0")) buf->error(err, sev, std::move(text));
}

}   // namespace

ErrorT Error(ErrorT err, const char* def_str)
{
    const ErrnoKeeperC keeper;
    ErrSevT sev;
    StringC text = ErrorString(sev, err, def_str);
    record(err, sev, std::move(text));
    return err;
}

ErrorT Error(ErrorT err, const char* def_str, ArgListC arglist)
{
    const ErrnoKeeperC keeper;
    ErrSevT sev;
    StringC text = ErrorString(sev, err, def_str, std::move(arglist));
    record(err, sev, std::move(text));
    return err;
}

ErrorT ErrorVA(ErrorT err, const char* def_str, std::va_list params)
{
    const ErrnoKeeperC keeper;
    ErrSevT sev;
    StringC text = ErrorStringVA(sev, err, def_str, params);
    record(err, sev, std::move(text));
    return err;
}

ErrorT ErrorErrno(int error) { return Error(ErrorOfErrno(error), ""); }

StringC ErrorString(ErrSevT& sev, ErrorT err, const char* def_str)
{
    const ErrnoKeeperC keeper;
    return messageOf(sev, err, def_str);
}

StringC ErrorString(ErrSevT& sev, ErrorT err, const char* def_str, ArgListC arglist)
{
    const ErrnoKeeperC keeper;
    return formatted(messageOf(sev, err, def_str), std::move(arglist), keeper);
}

// What the caller passed is what the caller's own text says: another text, from a catalog, may have been
// written for another release.
StringC ErrorStringVA(ErrSevT& sev, ErrorT err, const char* def_str, std::va_list params)
{
    const ErrnoKeeperC keeper;
    const StringC text = messageOf(sev, err, def_str);
    ErrSevT ignored;
    const StringC types = isNoText(def_str) ? text : defaultMessage(def_str, ignored);
    return formatted(text, StringC::formatArgs(types, params), keeper);
}

StringC getL10NMessage(ErrorT err, const char* def_str)
{
    ErrSevT ignored;
    return ErrorString(ignored, err, def_str);
}

StringC getL10NMessage(ErrorT err, const char* def_str, ArgListC arglist)
{
    ErrSevT ignored;
    return ErrorString(ignored, err, def_str, std::move(arglist));
}

ErrSequenceT ErrorCheckpoint() { return getErrBuf(2)->checkpoint(); }

void ErrorRollback(ErrSequenceT which) { getErrBuf(2)->rollback(which); }
