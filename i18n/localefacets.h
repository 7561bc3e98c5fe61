// localefacets.h: the facets of a locale that carry no data on this system.
//
// Thread safety: any thread; they never change.
#ifndef TVXCMN_I18N_LOCALEFACETS_H
#define TVXCMN_I18N_LOCALEFACETS_H

#include "localei.h"

#include <cstddef>

class LocaleRegionC final : public LocaleRegionI {
public:
    explicit LocaleRegionC(const LocaleIdT& name) : lcid(name) {}

    StringC lang3() const override { return m_lang3; }
    StringC lang2() const override { return m_lang2; }
    StringC country() const override { return m_country; }
    StringC countryName() const override { return m_countryName; }
    unsigned long platformLocaleID() const override { return 0; }
    void overrideUILocale(unsigned long) override {}

private:
    const StringC m_lang3;
    const StringC m_lang2;
    const StringC m_country;
    const StringC m_countryName;
    const LocaleIdT lcid;
};

class LocaleNumbersC final : public LocaleNumbersI {
public:
    explicit LocaleNumbersC(const LocaleIdT&) {}

    StringC plus() const override { return m_plus; }
    StringC minus() const override { return m_minus; }
    LocaleSignPlacementT positive() const override { return m_positive; }
    LocaleSignPlacementT negative() const override { return m_negative; }
    StringC decimal() const override { return m_decimal; }
    StringC thousandsSep() const override { return m_thousandsSep; }
    int grouping() const override { return m_grouping; }
    StringC digits() const override { return m_digits; }
    StringC units() const override { return m_units; }
    StringC listSep() const override { return m_listSep; }

private:
    const StringC m_plus;
    const StringC m_minus;
    const LocaleSignPlacementT m_positive = 0;
    const LocaleSignPlacementT m_negative = 0;
    const StringC m_decimal;
    const StringC m_thousandsSep;
    const int m_grouping = 0;
    const StringC m_digits;
    const StringC m_units;
    const StringC m_listSep;
};

class LocaleCalendarC final : public LocaleCalendarI {
public:
    explicit LocaleCalendarC(const LocaleIdT&) {}

    LocaleCalendarT type() const override { return m_type; }
    LocaleDateOrderT shortDateSeq() const override { return m_shortDateSeq; }
    LocaleDateOrderT longDateSeq() const override { return m_longDateSeq; }
    BooleanT fourDigitCentury() const override { return m_fourDigitCentury; }
    BooleanT hourZeroPad() const override { return m_hourZeroPad; }
    BooleanT dayZeroPad() const override { return m_dayZeroPad; }
    BooleanT monthZeroPad() const override { return m_monthZeroPad; }
    int firstDayOfWeek() const override { return m_firstDayOfWeek; }
    LocaleFirstWeekT firstWeekOfYear() const override { return m_firstWeekOfYear; }
    StringC am() const override { return m_am; }
    StringC pm() const override { return m_pm; }
    StringC dayName(int day) const override { return at(m_dayName, day); }
    StringC dayAbbrev(int day) const override { return at(m_dayAbbrev, day); }
    StringC monthAbbrev(int month) const override { return at(m_monthAbbrev, month); }
    StringC monthName(int month) const override { return at(m_monthName, month); }
    StringC monthNameGen(int month) const override { return at(m_monthNameGen, month); }
    StringC dateSep() const override { return m_dateSep; }
    StringC timeSep() const override { return m_timeSep; }

private:
    template <size_t N>
    static StringC at(const StringC (&names)[N], int index)
    {
        return index >= 0 && static_cast<size_t>(index) < N ? names[index] : StringC();
    }

    const LocaleCalendarT m_type = LocaleCalendarGregorian;
    const LocaleDateOrderT m_shortDateSeq = LocaleCalendarMDY;
    const LocaleDateOrderT m_longDateSeq = LocaleCalendarMDY;
    const BooleanT m_fourDigitCentury = false;
    const BooleanT m_hourZeroPad = false;
    const BooleanT m_dayZeroPad = false;
    const BooleanT m_monthZeroPad = false;
    const int m_firstDayOfWeek = 0;
    const LocaleFirstWeekT m_firstWeekOfYear = 0;
    const StringC m_am;
    const StringC m_pm;
    const StringC m_dayName[7];
    const StringC m_dayAbbrev[7];
    const StringC m_monthAbbrev[13];
    const StringC m_monthName[13];
    const StringC m_monthNameGen[13];
    const StringC m_dateSep;
    const StringC m_timeSep;
};

class LocaleCurrencyC final : public LocaleCurrencyI {
public:
    explicit LocaleCurrencyC(const LocaleIdT&) {}

    LocaleCurrencyPlacementT placement() const override { return m_placement; }
    LocaleSignPlacementT negative() const override { return m_negative; }
    int digits() const override { return m_digits; }
    StringC name() const override { return m_name; }
    StringC symbol() const override { return m_symbol; }
    StringC iso4217() const override { return m_iso4217; }
    StringC radixSep() const override { return m_radixSep; }
    StringC thousandsSep() const override { return m_thousandsSep; }
    int grouping() const override { return m_grouping; }

private:
    const LocaleCurrencyPlacementT m_placement = 0;
    const LocaleSignPlacementT m_negative = 0;
    const int m_digits = 0;
    const StringC m_name;
    const StringC m_symbol;
    const StringC m_iso4217;
    const StringC m_radixSep;
    const StringC m_thousandsSep;
    const int m_grouping = 0;
};

#endif   // TVXCMN_I18N_LOCALEFACETS_H
