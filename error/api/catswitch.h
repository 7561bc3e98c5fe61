// catswitch.h: what gives a number its text, out of the catalogs of the module and the process, or the default text.
//
// Each linked image has one, which is never destroyed.
//
// Thread safety: any thread.
#ifndef TVXCMN_ERROR_CATSWITCH_H
#define TVXCMN_ERROR_CATSWITCH_H

#include "errcatalog.h"

class ErrCatSwitchC final : public ErrCatalogI {
public:
    StringC getMessage(ErrSevT& sev, ErrorT err, const char* def_str, const char* style) override;
    void setUserLevel(StringC p_userLevel) override;
};

#endif   // TVXCMN_ERROR_CATSWITCH_H
