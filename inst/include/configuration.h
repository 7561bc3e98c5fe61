// configuration.h: the configuration of the process (getConfiguration in tvxcmn.h).
//
// It owns the registry, in which no INI file is registered at first: each module registers its own.
//
// Thread safety: latched.
// Ownership:     the configuration and its registry live until the process ends.
#ifndef TVXCMN_CONFIGURATION_H
#define TVXCMN_CONFIGURATION_H

#include "stringc.h"

class ConfRegistryI;

class ConfigurationI {
public:
    virtual ConfRegistryI* registry() = 0;

    // There is no remote configuration server on this system and there are no other subtrees for users and
    // machines: setting one does nothing, and all of the names are empty.
    virtual void setRemoteServer(StringC remoteServer, bool overWrite) = 0;
    virtual StringC getRemoteServer() = 0;
    virtual StringC getAlternateUserSubKey() = 0;
    virtual StringC getAlternateMachineSubKey() = 0;

    virtual ~ConfigurationI() = default;
};

#endif   // TVXCMN_CONFIGURATION_H
