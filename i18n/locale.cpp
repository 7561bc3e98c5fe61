#include "i18n/locale.h"

#include "assertfatal.h"
#include "cmnlib/neverdestroyed.h"
#include "hashmap.h"
#include "i18n/localefacets.h"
#include "i18n/localelanguage.h"
#include "ipc/forkguard.h"
#include "latch.h"
#include "tvxcmn.h"

#include <clocale>

namespace {

typedef StringMapM<LocaleC*, StringC> LocaleMapT;

constinit NeverDestroyedM<CountingLatchC> latch;
constinit LatchForkGuardM<CountingLatchC> latchGuard(*latch);

// To be used inside the section. Never destroyed, so that what runs at the exit still finds its locale.
LocaleMapT& locales()
{
    static NeverDestroyedM<LocaleMapT> map;
    return *map;
}

}   // namespace

extern "C" LocaleI* getLocale(LocaleIdT& lcid)
{
    lcid = StringC(std::setlocale(LC_ALL, nullptr), StringC::CC_ASCII);
    return LocaleC::named(lcid);
}

void LocaleC::enterCriticalSection()
{
    guardOverForks(FORK_RANK_LOCALE, latchGuard);
    latch->enter();
}

void LocaleC::leaveCriticalSection() { latch->leave(); }

LocaleC* LocaleC::named(const LocaleIdT& name)
{
    const LocaleSectionC section;
    const auto known = locales().get(name);
    if (known.found()) return known.Value();
    LocaleC* const made = new LocaleC(name);
    locales().put(name, made);
    return made;
}

// The facet that is kept, made now if need be.
template <class FacetT>
FacetT* LocaleC::facet(AtomicM<FacetT*>& kept, int version)
{
    if (!TVX_CHECK((version >= 1) && (version <= 2), "(version >= 1) && (version <= 2)")) return nullptr;
    if (kept == nullptr) {
        const LocaleSectionC section;
        if (kept == nullptr) kept = new FacetT(lcid);
    }
    return kept;
}

LocaleRegionI* LocaleC::region(int version) { return facet(m_region, version); }

LocaleNumbersI* LocaleC::numbers(int version) { return facet(m_numbers, version); }

LocaleCalendarI* LocaleC::calendar(int version) { return facet(m_calendar, version); }

LocaleCurrencyI* LocaleC::currency(int version) { return facet(m_currency, version); }

LocaleLanguageI* LocaleC::language(int version) { return facet(m_language, version); }
