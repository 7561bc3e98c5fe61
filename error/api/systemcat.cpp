#include "error/api/systemcat.h"

#include "string/api/textrepair.h"

#include <cstring>

StringC ErrSystemCatalogC::getMessage(ErrSevT& sev, ErrorT err, const char*, const char*)
{
    sev = ERR_SEV_ERROR;
    if (!ErrorIsErrno(err)) return {};
    char buffer[256];
    return repairedText(strerror_r(static_cast<int>(ErrorMessageOf(err)), buffer, sizeof buffer));
}
