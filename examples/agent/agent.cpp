// agent: looks after files, with settings that it shares with the other agents of the machine.
//
//   agent SETTINGS NAME
//
// SETTINGS is an INI file (settings.h), and NAME is the name of this agent in it. The agent inspects the files
// that the settings name, records the checksums that are not known yet and tells what is wrong with the others.
// Then it waits until the other agents are done, too. In the end it encrypts its summary and decrypts it again, if
// there is a cryptographic module.
//
// The settings name a trace profile (tracer.h). The classes are
//     agent               start, waiting and end
//     agent/settings      what this agent has done, and what it sees of others
//     agent/settings/sum  checksums that are recorded
//     agent/file          each file, and the time that it took
//     agent/file/read     each piece that is read, and the sum of the bytes
//     agent/report        what is handed on to the user
//     agent/crypto        which OpenSSL there is
//     Error               every failure: what occurred, was reported, was recovered from
//
// Exit status: 0; 1 something went wrong; 2 wrong use.

#include "agent_msg.h"
#include "inspection.h"
#include "protection.h"
#include "settings.h"

#include "../support/wellformed.h"

#include "arglist.h"
#include "datetime.h"
#include "errorapi.h"
#include "tracer.h"
#include "tracesite.h"
#include "tvxcmn.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace {

const char USAGE[] = "usage: agent SETTINGS NAME\n";
const int STATUS_USAGE = 2;

void print(const StringC& text)
{
    std::fwrite(text.utf8(), 1, text.utf8Bytes(), stdout);
    std::fflush(stdout);
}

// Prints what has gone wrong in this thread since the last time, and returns the worst severity.
ErrSevT report()
{
    static const char* const SEVERITIES[] = {"note", "note", "note", "warning", "error", "fatal"};
    const ErrBufI& buffer = *getErrBuf(2);
    for (unsigned long i = 0; i < buffer.count(); ++i) {
        const ErrEntryI& entry = *buffer.get(i);
        print(StringC::format("  %S %s s%um%u: %S\n", ArgList << YMDTimeC::now(true).toSQLTime()
                                                              << SEVERITIES[entry.severity()]
                                                              << ErrorSetOf(entry.error())
                                                              << ErrorMessageOf(entry.error()) << entry.problem()));
        for (const StringC& part : {entry.reason(), entry.solution()}) {
            if (!part.isEmpty()) print(StringC::format("      %S\n", ArgList << part));
        }
    }
    ErrSevT worst;
    const StringC reported = getErrBuf(2)->coalesce(worst);
    if (!reported.isEmpty()) TVX_TRACE("agent/report", "%S", reported);
    return worst;
}

ErrSevT inspectFiles(SettingsC& settings)
{
    ErrSevT worst = ERR_SEV_NONE;
    unsigned long inspected = 0;
    for (FileRecordT& file : settings.files()) {
        if (inspect(file)) settings.setSum(file);
        settings.setInspected(++inspected);
        worst = std::max(worst, report());
    }
    return worst;
}

void waitForOthers(const SettingsC& settings)
{
    TVX_TRACE("agent", "waiting for the others");
    const unsigned long patience = settings.patience();
    const auto start = std::chrono::steady_clock::now();
    const auto isTimeLeft = [&] {
        return std::chrono::steady_clock::now() - start < std::chrono::duration<double>(patience);
    };
    for (const StringC& other : settings.otherAgents()) {
        AgentStateT state;
        while (!(state = settings.stateOf(other)).isDone && isTimeLeft()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        if (state.isDone) {
            TVX_TRACE("agent/settings", "%S is done", other);
            print(StringC::format("  %S is done with %u files\n", ArgList << other << state.inspected));
        } else {
            Error(AGENT_NOT_DONE, "The agent %1$S is not done after %2$u seconds", ArgList << other << patience);
        }
    }
}

ErrSevT run(const StringC& path, const StringC& name)
{
    SettingsC settings(path, name);
    if (!settings.findAgent()) return report();
    getTracer(2)->registerTask("agent", settings.profile().utf8(), nullptr);
    TVX_TRACE("agent", "%S starts", name);

    settings.setState("running");
    const StringC summary = StringC("%S inspects %u files") % (ArgList << name << settings.files().size());
    print(summary + "\n");
    const ErrSevT worstOfFiles = inspectFiles(settings);
    settings.setState("done");
    settings.save();
    waitForOthers(settings);
    print(protect(summary));
    const ErrSevT worst = std::max(worstOfFiles, report());
    TVX_TRACE("agent", "%S ends, the worst severity is %d", name, static_cast<int>(worst));
    return worst;
}

// Bytes that are not UTF-8 are no text for the library.
bool isText(const std::string& word) { return wellFormedPrefix(word, StringC::CC_UTF8) == word.size(); }

}   // namespace

int main(int argc, char** argv)
{
    if (argc != 3 || argv[1][0] == '-' || !isText(argv[1]) || !isText(argv[2])) {
        std::fputs(USAGE, stderr);
        return STATUS_USAGE;
    }
    return run(argv[1], argv[2]) >= ERR_SEV_ERROR ? EXIT_FAILURE : EXIT_SUCCESS;
}
