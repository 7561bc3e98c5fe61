#include "configuration.h"
#include "confregistry.h"
#include "errcatalog.h"
#include "tvxcmn.h"

StringC GetRegInstallPath()
{
    StringC folder;
    const ErrorT failure = getConfiguration(2)->registry()->ReadString(
        HKEY_LOCAL_MACHINE, "SOFTWARE\\Corvantage Corp\\Corvantage", "InstallDir", &folder);
    return failure == 0 ? folder + StringC("/lib/") : StringC();
}
