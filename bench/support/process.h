// process.h: programs as rows.
#ifndef TVXCMN_BENCH_PROCESS_H
#define TVXCMN_BENCH_PROCESS_H

#include <string>
#include <vector>

// Runs a program, which has to end well; what it prints goes nowhere. The processor time that the system counts for its
// process, start included, in seconds.
double run(std::vector<std::string> command);

#endif   // TVXCMN_BENCH_PROCESS_H
