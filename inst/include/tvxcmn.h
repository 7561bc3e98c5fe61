// tvxcmn.h: the door of libtvxcmn.so. Everything that a program or module of the agent gets from the
// library's implementation side comes through one of these functions.
//
// What they return lives until the process ends and is never released or deleted by the caller. The
// slots of the interfaces never move, so a module built against an older header goes on working.
//
// Thread safety: any thread may call any of them at any time, first calls included.
#ifndef TVXCMN_TVXCMN_H
#define TVXCMN_TVXCMN_H

class ErrBufI;
class StringImplFactoryI;

#define TVXCMN_EXPORT __attribute__((visibility("default")))

extern "C" {

// The factory of all string bodies (stringimpl.h). Every version asked for gives the same object.
TVXCMN_EXPORT StringImplFactoryI* getStringFactory(int version);

// The calling thread's error buffer (errbuf.h), made when the thread first asks. Every version asked for gives
// the same object. It ends with its thread, unlike everything else that comes from here.
TVXCMN_EXPORT ErrBufI* getErrBuf(int version);

}   // extern "C"

#endif   // TVXCMN_TVXCMN_H
