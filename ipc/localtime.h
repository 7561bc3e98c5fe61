// localtime.h: the local time of the system, which the child of a fork may ask for, too.
//
// The C library keeps its rules of the time zone under a lock that a fork does not renew: a child would wait for ever
// if another thread was in the middle of this at the fork. None that comes through here is.
//
// Thread safety: latched.
#ifndef TVXCMN_IPC_LOCALTIME_H
#define TVXCMN_IPC_LOCALTIME_H

#include <ctime>

// As localtime_r. False for a year that is no int.
bool localTimeOf(time_t time, std::tm& local);

#endif   // TVXCMN_IPC_LOCALTIME_H
