// Runs a fuzz target over the empty input and every file of the directory named on the command line.

#include "fuzz.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIRECTORY\n", argv[0]);
        return 2;
    }
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());

    LLVMFuzzerTestOneInput(nullptr, 0);
    for (const std::filesystem::path& path : paths) {
        std::ifstream file(path, std::ios::binary);
        const std::vector<char> input{std::istreambuf_iterator<char>(file), {}};
        std::fprintf(stderr, "%s\n", path.filename().c_str());   // the last one named is the one that fails
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
    }
    std::printf("%zu inputs\n", paths.size());
    return 0;
}
