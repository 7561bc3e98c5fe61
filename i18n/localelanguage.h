// localelanguage.h: the language of a locale, which is also the process's message catalog.
//
// Thread safety: any thread. Look-ups take no latch; the catalog is replaced under that of the locales.
#ifndef TVXCMN_I18N_LOCALELANGUAGE_H
#define TVXCMN_I18N_LOCALELANGUAGE_H

#include "error/api/catalogcell.h"
#include "error/api/systemcat.h"
#include "localei.h"

class LocaleLanguageC final : public LocaleLanguageI, public ErrCatalogI {
public:
    explicit LocaleLanguageC(const LocaleIdT& name) : lcid(name) {}
    ~LocaleLanguageC() override { m_catalog.replace(nullptr); }
    LocaleLanguageC(const LocaleLanguageC&) = delete;
    LocaleLanguageC& operator=(const LocaleLanguageC&) = delete;

    ErrCatalogI* catalog() override { return this; }
    ErrorT catalog(StringC name) override;
    LocaleRegionI* region() override { return m_region; }

    // The system's catalog answers what has no catalog text of its own: errors of the system, and numbers that
    // are never looked up.
    StringC getMessage(ErrSevT& sev, ErrorT err, const char* def_str, const char* style) override;
    void setUserLevel(StringC p_userLevel) override;

private:
    StringC m_userLevel;
    ErrCatalogCellC m_catalog;   // empty: as a catalog without a file
    ErrSystemCatalogC m_systemCatalog;
    LocaleRegionI* const m_region = nullptr;
    const LocaleIdT lcid;
};

#endif   // TVXCMN_I18N_LOCALELANGUAGE_H
