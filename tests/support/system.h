// system.h: what tests ask the machine for.
#ifndef TVXCMN_TESTS_SYSTEM_H
#define TVXCMN_TESTS_SYSTEM_H

#include <string>
#include <unistd.h>
#include <vector>

// What a program writes to its standard output; its error output goes to nowhere.
std::string programOutput(const std::vector<std::string>& arguments);

// `text` taken apart at `separator`; what follows the last one counts only when there is something.
std::vector<std::string> splitText(const std::string& text, char separator);

// The number of descriptors that the process has open.
size_t openDescriptors();

// Runs `body` in a child process and returns its exit status; -1 when it did not exit.
template <typename BodyT>
int inChild(BodyT body);
int waitForChild(int pid);
int forkChild();

template <typename BodyT>
int inChild(BodyT body)
{
    const int pid = forkChild();
    if (pid == 0) _exit(body());
    return waitForChild(pid);
}

#endif   // TVXCMN_TESTS_SYSTEM_H
