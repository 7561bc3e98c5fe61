#include "settings.h"

#include "agent_msg.h"

#include "arglist.h"
#include "configuration.h"
#include "errorapi.h"
#include "tracesite.h"
#include "tvxcmn.h"

#include <cerrno>

namespace {

const char ROOT[] = "HKEY_LOCAL_MACHINE";
const char BASE_KEY[] = "SOFTWARE\\Corvantage Corp";
const char AGENTS_KEY[] = "SOFTWARE\\Corvantage Corp\\Corvantage\\Agents";

StringC filesKey(const StringC& agent) { return agent + "\\Files"; }

}   // namespace

SettingsC::SettingsC(const StringC& path, const StringC& agent)
    : m_registry(*getConfiguration(2)->registry()), m_path(path), m_agent(agent)
{
    m_registry.AddIniFile(path, ROOT, BASE_KEY);
    m_registry.OpenKey(HKEY_LOCAL_MACHINE, AGENTS_KEY, KEY_ALL_ACCESS, &m_agents);
}

SettingsC::~SettingsC() { m_registry.CloseKey(m_agents); }

bool SettingsC::findAgent()
{
    if (!m_agent.isEmpty() && m_registry.ExistsBytes(m_agents, m_agent, "", nullptr, KEY_READ) == 0) return true;
    Error(AGENT_UNKNOWN, "The settings in %1$S say nothing of an agent %2$S", ArgList << m_path << m_agent);
    return false;
}

StringC SettingsC::profile() const
{
    StringC path;
    m_registry.ReadString(m_agents, "", "Profile", &path);
    return path;
}

unsigned long SettingsC::patience() const
{
    unsigned long seconds = 10;
    m_registry.ReadDWord(m_agents, "", "Patience", &seconds);
    return seconds;
}

std::vector<FileRecordT> SettingsC::files() const
{
    std::vector<FileRecordT> files;
    unsigned long key;
    if (m_registry.StartEnumerate(m_agents, filesKey(m_agent), &key) != 0) return files;
    StringC path;
    for (unsigned long i = 0; m_registry.GetEnumeratedValue(key, i, &path, nullptr, nullptr, nullptr) == 0; ++i) {
        files.push_back({path, ""});
    }
    for (FileRecordT& file : files) m_registry.ReadString(key, "", file.path, &file.sum);
    m_registry.EndEnumerate(key);
    return files;
}

std::vector<StringC> SettingsC::otherAgents() const
{
    std::vector<StringC> others;
    StringC name;
    for (unsigned long i = 0; m_registry.GetEnumeratedKey(m_agents, i, &name) == 0; ++i) {
        if (!name.equalCI(m_agent)) others.push_back(name);
    }
    return others;
}

AgentStateT SettingsC::stateOf(const StringC& agent) const
{
    StringC state;
    AgentStateT result = {};
    m_registry.ReadString(m_agents, agent, "State", &state);
    m_registry.ReadDWord(m_agents, agent, "Inspected", &result.inspected);
    result.isDone = state == "done";
    return result;
}

void SettingsC::setState(const StringC& state)
{
    TVX_TRACE("agent/settings", "%S is %S", m_agent, state);
    m_registry.CreateString(m_agents, m_agent, "State", state);
}

void SettingsC::setInspected(unsigned long count) { m_registry.CreateDWord(m_agents, m_agent, "Inspected", count); }

void SettingsC::setSum(const FileRecordT& file)
{
    TVX_TRACE("agent/settings/sum", "the checksum of %S is %S", file.path, file.sum);
    m_registry.CreateString(m_agents, filesKey(m_agent), file.path, file.sum);
}

void SettingsC::save()
{
    if (m_registry.SetWriteThrough(true) == 0) return;
    ErrorErrno(errno);
    Error(AGENT_NOT_SAVED, "The settings in %S could not be saved", ArgList << m_path);
}
