// A program of the agent that uses the library at the edges of its life: in the constructor of its very
// first static object, in exit handlers registered before and after that, in static destructors, and in
// a thread that is still running while the process exits. It prints nothing and exits with 0 when every
// use gave the right answer.

#include "configuration.h"
#include "confregistry.h"
#include "errorapi.h"
#include "opensslproxy.h"
#include "stringc.h"
#include "traceconsumer.h"
#include "tracecontroller.h"
#include "tracer.h"
#include "tracesite.h"
#include "tvxcmn.h"

#include <atomic>
#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace {

void failUnless(bool holds)
{
    if (!holds) _exit(1);
}

// Touches the empty text, the shared characters, conversion both ways, change and search.
void useStrings()
{
    StringC text(u"h\u00E9\U0001F600");
    failUnless(text.length() == 3);
    text += UCS4{'!'};
    text = text + StringC() + StringC("x");
    const UTF16T* const utf16 = text.utf16();
    failUnless(StringC(utf16) == text);
    text.utf16Release(utf16);
    failUnless(text.asUpper().find('X') == 4);
}

// Reports, reads back and empties the calling thread's buffer.
void useErrors()
{
    const ErrSequenceT checkpoint = ErrorCheckpoint();
    Error(0xE1B20005L, "{w}%S", "x");
    ErrSevT worst;
    failUnless(getErrBuf(2)->coalesce(worst) == StringC("x") && worst == ERR_SEV_WARN);
    ErrorErrno(1);
    ErrorRollback(checkpoint);
    failUnless(getErrBuf(2)->count() == 0);
}

// Traces to a file that takes everything, in lines that wait for others.
void useTracer()
{
    TraceDefaultConsumerI* const file = getTracer(2)->getDefaultConsumer();
    static TraceSiteC site("lifetime");
    if (!site.isEnabled()) {
        file->setFilePattern("/dev/null");
        file->setFlushFreq(3);
        failUnless(getTraceController(2)->enable(file, "lifetime") == 0);
    }
    failUnless(site.isEnabled());
    site.trace("%s", "x");
}

// With the module and without it.
void useCrypto()
{
    const AutoRollbackErrorCheckpointC checkpoint;
    OpenSSLProxyI* const proxy = getOpenSSL(1)->getProxy();
    failUnless(proxy != nullptr && proxy == getOpenSSL(1)->getProxy());
    failUnless(((proxy->SSLeay)() == 0) == ((proxy->EVP_aes_256_cbc)() == nullptr));
}

// A root is all that there is while nobody has registered a file.
void useRegistry()
{
    ConfRegistryI* const registry = getConfiguration(2)->registry();
    unsigned long key = 0;
    failUnless(registry->OpenKey(HKEY_LOCAL_MACHINE, "", KEY_READ, &key) == 0 && key == HKEY_LOCAL_MACHINE);
    StringC value;
    failUnless(registry->ReadString(key, "SOFTWARE", "x", &value) == TVXERR_REGISTRY_NOT_FOUND);
}

void useAll()
{
    useStrings();
    useErrors();
    useTracer();
    useRegistry();
    useCrypto();
}

struct EdgeC {
    EdgeC()
    {
        std::atexit(useAll);
        useAll();
    }
    ~EdgeC() { useAll(); }
};

__attribute__((init_priority(101))) const EdgeC first;

}   // namespace

int main()
{
    static std::atomic<bool> isRunning{false};
    std::thread([] {
        for (;;) {
            useAll();
            getErrBuf(2)->release();   // the next round makes a new one
            isRunning = true;
        }
    }).detach();
    std::atexit(useAll);
    while (!isRunning) std::this_thread::yield();
    return 0;
}
