// locale.h: the locales of the process, one for each name that has been current.
//
// Thread safety: latched, by one latch for all locales, under which nothing traces or reports. A facet that has been
// made is found without it.
#ifndef TVXCMN_I18N_LOCALE_H
#define TVXCMN_I18N_LOCALE_H

#include "atomicm.h"
#include "localei.h"

class LocaleRegionC;
class LocaleNumbersC;
class LocaleCalendarC;
class LocaleCurrencyC;
class LocaleLanguageC;

class LocaleC final : public LocaleI {
public:
    explicit LocaleC(const LocaleIdT& name) : lcid(name) {}
    LocaleC(const LocaleC&) = delete;
    LocaleC& operator=(const LocaleC&) = delete;

    // The locale of that name, made now if need be. It stays for good.
    static LocaleC* named(const LocaleIdT& name);

    static void enterCriticalSection();
    static void leaveCriticalSection();

    LocaleRegionI* region(int version) override;
    LocaleNumbersI* numbers(int version) override;
    LocaleCalendarI* calendar(int version) override;
    LocaleCurrencyI* currency(int version) override;
    LocaleLanguageI* language(int version) override;

private:
    template <class FacetT>
    FacetT* facet(AtomicM<FacetT*>& kept, int version);

    // Null until first asked for.
    AtomicM<LocaleRegionC*> m_region{nullptr};
    AtomicM<LocaleNumbersC*> m_numbers{nullptr};
    AtomicM<LocaleCalendarC*> m_calendar{nullptr};
    AtomicM<LocaleCurrencyC*> m_currency{nullptr};
    AtomicM<LocaleLanguageC*> m_language{nullptr};
    const LocaleIdT lcid;
};

// The length of a stay in the critical section of all locales.
class LocaleSectionC {
public:
    LocaleSectionC() { LocaleC::enterCriticalSection(); }
    ~LocaleSectionC() { LocaleC::leaveCriticalSection(); }
    LocaleSectionC(const LocaleSectionC&) = delete;
    LocaleSectionC& operator=(const LocaleSectionC&) = delete;
};

#endif   // TVXCMN_I18N_LOCALE_H
