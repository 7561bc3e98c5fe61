// systemcat.h: the catalog of the system's own errors.
#ifndef TVXCMN_ERROR_SYSTEMCAT_H
#define TVXCMN_ERROR_SYSTEMCAT_H

#include "errcatalog.h"

// Knows the numbers that were made from an errno, and gives strerror's texts for them. Thread safety: any thread.
class ErrSystemCatalogC final : public ErrCatalogI {
public:
    StringC getMessage(ErrSevT& sev, ErrorT err, const char* def_str, const char* style) override;
    void setUserLevel(StringC) override {}
};

#endif   // TVXCMN_ERROR_SYSTEMCAT_H
