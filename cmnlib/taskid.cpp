#include "taskid.h"

#include <unistd.h>

long GetTaskId() { return getpid(); }
