// taskid.h: the number that names this process in trace and log lines.
#ifndef TVXCMN_TASKID_H
#define TVXCMN_TASKID_H

// The process id. Asked of the system at every call, so it is right in a forked child too. Any thread.
long GetTaskId();

#endif   // TVXCMN_TASKID_H
