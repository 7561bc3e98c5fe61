#include "support/system.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/wait.h>

std::string programOutput(const std::vector<std::string>& arguments)
{
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    const pid_t pid = fork();
    if (pid == 0) {
        std::vector<char*> argv;
        for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        dup2(ends[1], STDOUT_FILENO);
        if (std::freopen("/dev/null", "w", stderr) == nullptr) _exit(126);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    close(ends[1]);
    std::string text;
    char block[4096];
    for (ssize_t size; (size = read(ends[0], block, sizeof block)) > 0;) text.append(block, static_cast<size_t>(size));
    close(ends[0]);
    waitForChild(pid);
    return text;
}

std::vector<std::string> splitText(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    for (size_t at = 0; at < text.size();) {
        const size_t end = text.find(separator, at);
        parts.push_back(text.substr(at, end - at));
        at = end == std::string::npos ? text.size() : end + 1;
    }
    return parts;
}

size_t openDescriptors()
{
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) count += !entry.path().empty();
    return count - 1;   // one of them reads the list
}

int forkChild() { return fork(); }

int waitForChild(int pid)
{
    int status = 0;
    while (waitpid(pid, &status, 0) == -1) {
        if (errno != EINTR) return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
