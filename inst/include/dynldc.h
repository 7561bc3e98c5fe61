// dynldc.h: a shared object that is opened while the program runs.
//
// Its names become visible to what is loaded after it, because modules that build upon another expect that.
//
// Thread safety: unlocked. LastError is per-thread, as the loader's messages are: it belongs to the call that
//                failed before it in the same thread.
// Ownership:     one object, one opening. The code of a shared object stays as long as anybody has it open, so
//                nothing of it may be used after Disconnect.
#ifndef TVXCMN_DYNLDC_H
#define TVXCMN_DYNLDC_H

#include "stringc.h"

class DynLoadC {
public:
    static const char* const DefaultSuffix;   // ".so"
    static const char* const ClassName;       // "DynLoadC"

    // Opens the shared object `name`, with DefaultSuffix behind it if `addSuffix`. A name without "/" is
    // searched for as the loader does for the image that this code is linked into. The empty name is the
    // program itself. What became of it shows in Connected.
    DynLoadC(StringC name, unsigned char addSuffix);
    virtual ~DynLoadC();
    DynLoadC(const DynLoadC&) = delete;
    DynLoadC& operator=(const DynLoadC&) = delete;

    [[nodiscard]] bool Connected() const;

    // The address that goes by the name `symbol`. Null when there is none, for a null or empty name, and when
    // nothing is open; but a name may also have the address null, and then LastError is empty.
    void* AddressOfProcedure(const char* symbol);

    // Closes the shared object. Harmless when nothing is open.
    void Disconnect();

    // Why the last call in this thread failed, once: asking again gives the empty text. Never null, good until
    // the thread's next call, at most 4,607 bytes. Bytes that are not UTF-8 are U+FFFD.
    const char* LastError();

private:
    void* handle;
};

#endif   // TVXCMN_DYNLDC_H
