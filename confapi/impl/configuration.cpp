// The one configuration of the process, and the export that hands it out.

#include "assertfatal.h"
#include "atomicm.h"
#include "cmnlib/neverdestroyed.h"
#include "confapi/impl/configurationini.h"
#include "ipc/forkguard.h"
#include "latch.h"
#include "tvxcmn.h"

namespace {

constinit NeverDestroyedM<CountingLatchC> creationLatch;
constinit LatchForkGuardM<CountingLatchC> creationGuard(*creationLatch);
constinit AtomicM<ConfigurationIniC*> theConfiguration{nullptr};

ConfigurationIniC* makeConfiguration()
{
    guardOverForks(FORK_RANK_CREATE_CONFIGURATION, creationGuard);
    const LatchGuardM<CountingLatchC> guard(*creationLatch);
    if (theConfiguration == nullptr) {
        ConfRegistryIniC::guardForks();
        theConfiguration = new ConfigurationIniC;
    }
    return theConfiguration;
}

}   // namespace

extern "C" ConfigurationI* getConfiguration(int version)
{
    if (!TVX_CHECK((version >= 1) && (version <= 2), "(version >= 1) && (version <= 2)")) return nullptr;
    ConfigurationIniC* const configuration = theConfiguration;
    return configuration != nullptr ? configuration : makeConfiguration();
}
