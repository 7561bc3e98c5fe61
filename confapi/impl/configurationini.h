// configurationini.h: the configuration of the process, which owns its registry (configuration.h).
#ifndef TVXCMN_CONFAPI_CONFIGURATIONINI_H
#define TVXCMN_CONFAPI_CONFIGURATIONINI_H

#include "confapi/impl/confregini.h"
#include "configuration.h"

#include <memory>

class ConfigurationIniC final : public ConfigurationI {
public:
    ConfigurationIniC() : m_registry(std::make_unique<ConfRegistryIniC>()) {}

    ConfRegistryI* registry() override { return m_registry.get(); }
    void setRemoteServer(StringC, bool) override {}
    StringC getRemoteServer() override { return {}; }
    StringC getAlternateUserSubKey() override { return {}; }
    StringC getAlternateMachineSubKey() override { return {}; }

private:
    const std::unique_ptr<ConfRegistryIniC> m_registry;
};

#endif   // TVXCMN_CONFAPI_CONFIGURATIONINI_H
