// settings.h: the settings that the agents of a machine share.
//
// They lie in one INI file, which is registered as HKEY_LOCAL_MACHINE\SOFTWARE\Corvantage Corp:
//
//     [Corvantage]                       InstallDir   has the folder lib, with the message catalogs
//     [Corvantage\Agents]                Profile      trace profile of all agents
//                                        Patience     seconds for which one waits for the others
//     [Corvantage\Agents\NAME]           State        "running" or "done"; its agent sets it
//                                        Inspected    number of files that are done; its agent sets it
//     [Corvantage\Agents\NAME\Files]     the files that the agent inspects, each with its checksum; where that is
//                                        empty, the agent sets it
//
// A change goes to disk at once, into the file as the other agents have left it; a change of theirs is seen after
// a second at most.
//
// Thread safety: unlocked.
#ifndef AGENT_SETTINGS_H
#define AGENT_SETTINGS_H

#include "confregistry.h"
#include "stringc.h"

#include <vector>

struct FileRecordT {
    StringC path;
    StringC sum;   // empty: not known yet
};

struct AgentStateT {
    bool isDone;
    unsigned long inspected;   // number of files
};

class SettingsC {
public:
    // The settings in the INI file at `path`, for the agent of that name.
    SettingsC(const StringC& path, const StringC& agent);
    SettingsC(const SettingsC&) = delete;
    SettingsC& operator=(const SettingsC&) = delete;
    ~SettingsC();

    // Whether they know the agent; if not, that is reported.
    bool findAgent();

    StringC profile() const;
    unsigned long patience() const;
    std::vector<FileRecordT> files() const;
    std::vector<StringC> otherAgents() const;
    AgentStateT stateOf(const StringC& agent) const;

    // What fails here is kept, and saved with the next change; save reports when it still fails.
    void setState(const StringC& state);
    void setInspected(unsigned long count);
    void setSum(const FileRecordT& file);
    void save();

private:
    ConfRegistryI& m_registry;
    const StringC m_path;
    const StringC m_agent;
    unsigned long m_agents = 0;   // handle of the key of all agents
};

#endif   // AGENT_SETTINGS_H
