// localei.h: the locale of the process and its five facets.
//
// getLocale (tvxcmn.h) gives the locale that the process has at that moment; each name that setlocale knows has one.
// On this system the facets carry no regional data: texts are empty, numbers and flags 0, and the calendar is the
// Gregorian one. The language is also the process's message catalog (errcatalog.h).
//
// Thread safety: any thread. Facets do not change, but for the catalog of the language, which is latched.
// Ownership:     locales and their facets live until the process ends.
#ifndef TVXCMN_LOCALEI_H
#define TVXCMN_LOCALEI_H

#include "basetypes.h"
#include "errornumbers.h"
#include "stringc.h"

class ErrCatalogI;

typedef StringC LocaleIdT;   // a name as setlocale knows it

enum LocaleCalendarT : int {
    LocaleCalendarGregorian = 1,
    LocaleCalendarGregorianEnglish = 2,
    LocaleCalendarYearOfTheEmperor = 3,
    LocaleCalendarTaiwan = 4,
    LocaleCalendarTangunEra = 5,
    LocaleCalendarHijri = 6,
    LocaleCalendarThai = 7,
    LocaleCalendarHebrew = 8
};

// The order of month, day and year.
enum LocaleDateOrderT : int { LocaleCalendarMDY = 0, LocaleCalendarDMY = 1, LocaleCalendarYMD = 2 };

// Where a sign or a currency symbol stands, and which week is the first. Always 0 here.
typedef int LocaleSignPlacementT;
typedef int LocaleCurrencyPlacementT;
typedef int LocaleFirstWeekT;

class LocaleRegionI {
public:
    virtual StringC lang3() const = 0;   // the language's code of three letters (ISO 639-2)
    virtual StringC lang2() const = 0;   // and of two (ISO 639-1)
    virtual StringC country() const = 0;
    virtual StringC countryName() const = 0;
    virtual unsigned long platformLocaleID() const = 0;    // 0
    virtual void overrideUILocale(unsigned long id) = 0;   // does nothing

protected:
    ~LocaleRegionI() = default;   // not a slot
};

class LocaleNumbersI {
public:
    virtual StringC plus() const = 0;
    virtual StringC minus() const = 0;
    virtual LocaleSignPlacementT positive() const = 0;
    virtual LocaleSignPlacementT negative() const = 0;
    virtual StringC decimal() const = 0;   // the decimal separator
    virtual StringC thousandsSep() const = 0;
    virtual int grouping() const = 0;
    virtual StringC digits() const = 0;
    virtual StringC units() const = 0;
    virtual StringC listSep() const = 0;

protected:
    ~LocaleNumbersI() = default;   // not a slot
};

class LocaleCalendarI {
public:
    virtual LocaleCalendarT type() const = 0;
    virtual LocaleDateOrderT shortDateSeq() const = 0;
    virtual LocaleDateOrderT longDateSeq() const = 0;
    virtual BooleanT fourDigitCentury() const = 0;
    virtual BooleanT hourZeroPad() const = 0;
    virtual BooleanT dayZeroPad() const = 0;
    virtual BooleanT monthZeroPad() const = 0;
    virtual int firstDayOfWeek() const = 0;
    virtual LocaleFirstWeekT firstWeekOfYear() const = 0;
    virtual StringC am() const = 0;
    virtual StringC pm() const = 0;
    // Days from 0 to 6, months from 0 to 12, for calendars with a leap month; empty beyond.
    virtual StringC dayName(int day) const = 0;
    virtual StringC dayAbbrev(int day) const = 0;
    virtual StringC monthAbbrev(int month) const = 0;
    virtual StringC monthName(int month) const = 0;
    virtual StringC monthNameGen(int month) const = 0;   // as it stands behind a day
    virtual StringC dateSep() const = 0;
    virtual StringC timeSep() const = 0;

protected:
    ~LocaleCalendarI() = default;   // not a slot
};

class LocaleCurrencyI {
public:
    virtual LocaleCurrencyPlacementT placement() const = 0;
    virtual LocaleSignPlacementT negative() const = 0;
    virtual int digits() const = 0;
    virtual StringC name() const = 0;
    virtual StringC symbol() const = 0;
    virtual StringC iso4217() const = 0;
    virtual StringC radixSep() const = 0;
    virtual StringC thousandsSep() const = 0;
    virtual int grouping() const = 0;

protected:
    ~LocaleCurrencyI() = default;   // not a slot
};

class LocaleLanguageI {
public:
    // The process's message catalog in this locale. Before another one is opened it knows the system's errors only.
    virtual ErrCatalogI* catalog() = 0;
    // Opens the catalog of that name (errcatalog.h) in place of the former one; "" closes it. 0, also when there is
    // no such file.
    virtual ErrorT catalog(StringC name) = 0;
    virtual LocaleRegionI* region() = 0;   // null on this system: LocaleI knows the region

protected:
    ~LocaleLanguageI() = default;   // not a slot
};

// The facets, each in version 1 or 2, which are the same. Any other version is "(version >= 1) && (version <= 2)".
// Otherwise: null.
class LocaleI {
public:
    virtual LocaleRegionI* region(int version) = 0;
    virtual LocaleNumbersI* numbers(int version) = 0;
    virtual LocaleCalendarI* calendar(int version) = 0;
    virtual LocaleCurrencyI* currency(int version) = 0;
    virtual LocaleLanguageI* language(int version) = 0;

protected:
    ~LocaleI() = default;   // not a slot
};

#endif   // TVXCMN_LOCALEI_H
