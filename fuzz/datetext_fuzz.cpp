// Texts of times: whatever is read is written and read again, whole and cut short.

#include "datetime.h"
#include "errorapi.h"
#include "tvxcmn.h"

#include "fuzz.h"

namespace {

// The number that reading reported; 0 when nothing.
ErrorT takeReport()
{
    ErrBufI& buffer = *getErrBuf(2);
    FUZZ_REQUIRE(buffer.count() <= 1);
    const ErrorT error = buffer.count() != 0 ? buffer.get(0)->error() : 0;
    buffer.reset();
    return error;
}

// Flags may drop digits of the fraction, or the time; what is left comes back.
void requireReadsBack(const YMDTimeC& time, int flags)
{
    static const long UNITS[] = {100000000, 10000000, 1000000, 100000, 10000, 1000, 100, 10};
    const bool isTimeOfDay = time.Year() == 0;
    const long unit = (flags & YMDTimeC::DATE_ONLY) == 0 ? UNITS[flags & YMDTimeC::FRACTION_DIGITS]
                      : isTimeOfDay                      ? UNITS[0]
                                                         : IntervalC::DAY;
    if (time.Interval().get() < 0) return;   // no date before year 1 can be written
    if (isTimeOfDay && time.Interval().get() >= IntervalC::DAY) return;
    if (isTimeOfDay && unit != UNITS[0] && (flags & YMDTimeC::SEPARATORS) == 0) return;   // more digits than a time
    const IntervalC kept(time.Interval().get() / unit * unit);
    const YMDTimeC back = YMDTimeC::fromString(YMDTimeC(kept, time.IsLocal()).toString(flags));
    FUZZ_REQUIRE(takeReport() == 0);
    FUZZ_REQUIRE(back.Interval() == kept);
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInputC input(data, size);
    const int flags = input.byte();
    const std::string bytes(input.rest());

    const StringC text(bytes.data(), bytes.size(), StringC::CC_UTF8);
    const YMDTimeC time = YMDTimeC::fromString(text);
    const ErrorT error = takeReport();
    FUZZ_REQUIRE(error == 0 || error == TVXERR_TIME_BAD_TEXT || error == TVXERR_TIME_BAD_FIELDS);
    FUZZ_REQUIRE(error != TVXERR_TIME_BAD_TEXT || time.isNull());
    requireReadsBack(time, flags);

    long count = 0;
    std::copy_n(bytes.data(), std::min(bytes.size(), sizeof count), reinterpret_cast<char*>(&count));
    requireReadsBack(YMDTimeC(IntervalC(count), (flags & 1) != 0), flags);
    return 0;
}
