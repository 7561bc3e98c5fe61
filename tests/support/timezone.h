// timezone.h: another time zone for the length of a scope.
#ifndef TVXCMN_TESTS_TIMEZONE_H
#define TVXCMN_TESTS_TIMEZONE_H

#include <cstdlib>
#include <ctime>
#include <string>

class TimeZoneC {
public:
    // Half an hour off the full hour, with summer time.
    TimeZoneC() : TimeZoneC("XST-5:30XDT,M3.5.0,M10.5.0/3") {}
    explicit TimeZoneC(const std::string& zone)
    {
        setenv("TZ", zone.c_str(), 1);
        tzset();
    }
    ~TimeZoneC()
    {
        unsetenv("TZ");
        tzset();
    }
    TimeZoneC(const TimeZoneC&) = delete;
    TimeZoneC& operator=(const TimeZoneC&) = delete;
};

#endif   // TVXCMN_TESTS_TIMEZONE_H
