#include "error/api/installpath.h"

#include "configuration.h"
#include "confregistry.h"
#include "errcatalog.h"
#include "tvxcmn.h"

bool findInstallPath(StringC& folder)
{
    StringC product;
    const ErrorT failure = getConfiguration(2)->registry()->ReadString(
        HKEY_LOCAL_MACHINE, "SOFTWARE\\Corvantage Corp\\Corvantage", "InstallDir", &product);
    folder = failure == 0 ? product + StringC("/lib/") : StringC();
    return failure != TVXERR_REGISTRY_FAILURE;
}

StringC GetRegInstallPath()
{
    StringC folder;
    findInstallPath(folder);
    return folder;
}
