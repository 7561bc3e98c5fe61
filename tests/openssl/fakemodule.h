// fakemodule.h: a cryptographic module that does nothing but note what is called.
//
// The environment says which version it claims to have (FAKE_VERSION, otherwise the oldest that is accepted)
// and its text (FAKE_TEXT, otherwise null). Tests reach the rest through the variable `fakeModule`.
#ifndef TVXCMN_TESTS_FAKEMODULE_H
#define TVXCMN_TESTS_FAKEMODULE_H

#include "opensslproxy.h"

struct FakeModuleT {
    OpenSSLProxyI* (*onEntry)(OpenSSLProxyI* own);   // null: the module gives its own proxy
    void (*onVersion)();
    int entries;          // calls of its entry
    const char* called;   // the operation that was called last
    char folder[4096];    // the current directory while it was loaded
};

#endif   // TVXCMN_TESTS_FAKEMODULE_H
