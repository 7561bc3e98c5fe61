// inspection.h: what the agent does with one file.
//
// Thread safety: any thread; what goes wrong is recorded in the calling thread's error buffer.
#ifndef AGENT_INSPECTION_H
#define AGENT_INSPECTION_H

#include "settings.h"

// Reads the file, and compares its checksum with the recorded one. Checksums are what cksum(1) prints. Where none
// is recorded yet, sets it in `file` and returns true.
bool inspect(FileRecordT& file);

#endif   // AGENT_INSPECTION_H
