// agent: inspects files in several threads and says what is wrong with them.
//
//   agent [--profile FILE] [--threads COUNT] FILE...
//
// Prints the lines and the checksum of each FILE, and what failed. In the end it encrypts its summary and
// decrypts it again, if there is a cryptographic module. If FILE.sum exists, it holds the checksum
// that FILE should have, as printed by "cksum <FILE".
//
// --profile names a trace profile (tracer.h). The classes are
//     agent               start and end
//     agent/file          each file, and the time that it took
//     agent/file/read     each piece that is read, and the sum of the bytes
//     agent/file/record   files without a recorded checksum
//     agent/report        what is handed on to the user
//     agent/crypto        which OpenSSL there is
//     Error               every failure: what occurred, was reported, was recovered from
//
// Exit status: 0; 1 a file cannot be read or has changed; 2 wrong use.

#include "inspection.h"
#include "protection.h"

#include "arglist.h"
#include "tracer.h"
#include "tracesite.h"
#include "tvxcmn.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

const char USAGE[] = "usage: agent [--profile FILE] [--threads COUNT] FILE...\n";
const int STATUS_USAGE = 2;

struct OptionsT {
    const char* profile = nullptr;
    long threads = 4;
    std::vector<std::string> files;
};

bool parse(int argc, char** argv, OptionsT& options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const char* const value = i + 1 < argc ? argv[i + 1] : "";
        if (word == "--profile") {
            options.profile = value;
            ++i;
        } else if (word == "--threads") {
            options.threads = std::strtol(value, nullptr, 10);
            ++i;
        } else if (word.size() > 1 && word[0] == '-') {
            return false;
        } else {
            options.files.push_back(word);
        }
    }
    return !options.files.empty() && options.threads >= 1 && options.threads <= 64;
}

// Findings in the order of the files, whichever thread made them.
std::vector<FindingT> inspectAll(const OptionsT& options)
{
    std::vector<FindingT> findings(options.files.size());
    std::atomic<size_t> next{0};
    const auto work = [&] {
        for (size_t i; (i = next.fetch_add(1)) < findings.size();) findings[i] = inspect(options.files[i]);
    };
    std::vector<std::thread> threads(static_cast<size_t>(options.threads));
    for (std::thread& thread : threads) thread = std::thread(work);
    for (std::thread& thread : threads) thread.join();
    return findings;
}

void print(const StringC& text) { std::fwrite(text.utf8(), 1, text.utf8Bytes(), stdout); }

}   // namespace

int main(int argc, char** argv)
{
    OptionsT options;
    if (!parse(argc, argv, options)) {
        std::fputs(USAGE, stderr);
        return STATUS_USAGE;
    }
    getTracer(2)->registerTask("agent", options.profile, nullptr);
    TVX_TRACE("agent", "%u files, %d threads", options.files.size(), options.threads);

    ErrSevT worst = ERR_SEV_NONE;
    for (const FindingT& finding : inspectAll(options)) {
        print(finding.text);
        worst = std::max(worst, finding.worst);
    }
    const StringC summary = StringC("%u files inspected") % (ArgList << options.files.size());
    print(protect(summary));
    TVX_TRACE("agent", "done, the worst severity is %d", static_cast<int>(worst));
    return worst >= ERR_SEV_ERROR ? EXIT_FAILURE : EXIT_SUCCESS;
}
