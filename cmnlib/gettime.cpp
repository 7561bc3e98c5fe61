#include "gettime.h"

int GetTimeOfDay(timeval* tv) { return gettimeofday(tv, nullptr); }
