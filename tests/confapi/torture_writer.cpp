// One of several processes that change one INI file until they are killed.
//
//     torture_writer FILE WRITER ROUND LOG
//
// It sets values of a section of its own and of one that all share, each to a number that only grows over the rounds
// (the starts of a writer), and appends "NAME NUMBER" to its log when the registry has said that a change is done.

#include "configuration.h"
#include "confregistry.h"
#include "tvxcmn.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

int main(int argc, char** argv)
{
    if (argc != 5) return 2;
    const std::string writer = argv[2];
    const int log = open(argv[4], O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    ConfRegistryI* const registry = getConfiguration(2)->registry();
    if (log < 0 || registry->AddIniFile(argv[1], "HKLM", "Torture") != 0) return 2;

    const unsigned long first = std::strtoul(argv[3], nullptr, 10) * 1000000;
    for (unsigned long n = first;; ++n) {
        const bool isShared = n % 3 == 0;
        const std::string name = (isShared ? "w" + writer + "n" : "n") + std::to_string(n % 20);
        const std::string key = isShared ? "Torture\\Shared" : "Torture\\Writer" + writer;
        if (registry->CreateDWord(HKEY_LOCAL_MACHINE, key.c_str(), name.c_str(), n) != 0) return 1;
        const std::string line = key.substr(8) + " " + name + " " + std::to_string(n) + "\n";
        if (write(log, line.data(), line.size()) != static_cast<ssize_t>(line.size())) return 1;
    }
}
