// gettime.h: the system's time of day.
#ifndef TVXCMN_GETTIME_H
#define TVXCMN_GETTIME_H

#include <sys/time.h>

// Fills `tv` with the seconds and microseconds since 1970-01-01 00:00:00 UTC (POSIX gettimeofday).
// Returns 0, or -1 with errno set. Any thread.
int GetTimeOfDay(timeval* tv);

#endif   // TVXCMN_GETTIME_H
