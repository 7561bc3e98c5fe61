#include "i18n/localelanguage.h"

#include "i18n/locale.h"

// The file is opened outside of the section: its name may hold the user's language, which the locale knows.
ErrorT LocaleLanguageC::catalog(StringC name)
{
    auto opened = std::make_unique<ErrCatalogC>(name);
    const LocaleSectionC section;
    opened->setUserLevel(m_userLevel);
    m_catalog.replace(std::move(opened));
    return 0;
}

StringC LocaleLanguageC::getMessage(ErrSevT& sev, ErrorT err, const char* def_str, const char* style)
{
    StringC text;
    sev = ERR_SEV_ERROR;
    if (m_catalog.message(err, text, sev)) return text;
    if (ErrorHasCatalogText(err) && !ErrorIsErrno(err)) return text;
    return m_systemCatalog.getMessage(sev, err, def_str, style);
}

void LocaleLanguageC::setUserLevel(StringC p_userLevel)
{
    const LocaleSectionC section;
    m_userLevel = p_userLevel;
    m_catalog.setUserLevel(p_userLevel);
}
