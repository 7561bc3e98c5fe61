// confregkey.h: one key in the registry's table of handles.
//
// Thread safety: unlocked; the registry's latch.
#ifndef TVXCMN_CONFAPI_CONFREGKEY_H
#define TVXCMN_CONFAPI_CONFREGKEY_H

#include "confapi/impl/confreginifile.h"
#include "stringc.h"

class ConfRegKeyC {
public:
    static constexpr int NO_FILE = -1;

    // `key`: the name of the section in the file; or the whole path, of a key that no file holds.
    ConfRegKeyC(const StringC& key, int fileRef, unsigned refCount)
        : m_key(key), m_fileRef(fileRef), m_refCount(refCount)
    {
    }

    const StringC& getKeyString() const { return m_key; }
    int getFileRef() const { return m_fileRef; }
    unsigned getRefCount() const { return m_refCount; }
    void addHandle() { ++m_refCount; }
    // A root may be closed by who never opened it.
    void removeHandle() { m_refCount -= m_refCount > 0 ? 1 : 0; }
    // Its file has another place.
    void setFileRef(int fileRef) { m_fileRef = fileRef; }

private:
    StringC m_key;
    int m_fileRef;
    unsigned m_refCount;
};

#endif   // TVXCMN_CONFAPI_CONFREGKEY_H
