// installpath.h: where the product is installed, for who has to know whether that could be found out.
//
// Thread safety: any thread.
#ifndef TVXCMN_ERROR_INSTALLPATH_H
#define TVXCMN_ERROR_INSTALLPATH_H

#include "stringc.h"

// What GetRegInstallPath gives (errcatalog.h). False when the registry could not be asked: it refuses that from its
// own middle, and from a consumer of the tracer.
bool findInstallPath(StringC& folder);

#endif   // TVXCMN_ERROR_INSTALLPATH_H
