#include "support/process.h"

#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

double seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}   // namespace

double run(std::vector<std::string> command)
{
    std::vector<char*> arguments;
    for (std::string& argument : command) arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child;
    int status;
    rusage used;
    if (::posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0 ||
        ::wait4(child, &status, 0, &used) != child || status != 0) {
        std::abort();
    }
    ::posix_spawn_file_actions_destroy(&actions);
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}
