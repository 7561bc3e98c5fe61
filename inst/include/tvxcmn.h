// tvxcmn.h: the door of libtvxcmn.so. Everything that a program or module of the agent gets from the
// library's implementation side comes through one of these functions.
//
// What they return lives until the process ends and is never released or deleted by the caller. The
// slots of the interfaces never move, so a module built against an older header goes on working.
//
// Thread safety: any thread may call any of them at any time, first calls included.
#ifndef TVXCMN_TVXCMN_H
#define TVXCMN_TVXCMN_H

class ConfigurationI;
class ErrBufI;
class LocaleI;
class OpenSSLI;
class StringC;
class StringImplFactoryI;
class TraceControllerI;
class TracerI;
class TracerV1I;

#define TVXCMN_EXPORT __attribute__((visibility("default")))

extern "C" {

// The factory of all string bodies (stringimpl.h). Every version asked for gives the same object.
TVXCMN_EXPORT StringImplFactoryI* getStringFactory(int version);

// The tracer (tracer.h). Version 2 gives its interface; version 1 gives a TracerV1I, which getTracerV1 below
// asks for. Any other version is "Tracer version not supported". Otherwise: as version 2.
TVXCMN_EXPORT TracerI* getTracer(int version);

// The controller of that tracer (tracecontroller.h). Requires version 2 ("Trace Controller version not
// supported", and "Tracer version not supported"). Otherwise: as version 2.
TVXCMN_EXPORT TraceControllerI* getTraceController(int version);

// The calling thread's error buffer (errbuf.h), made when the thread first asks. Every version asked for gives
// the same object. It ends with its thread, unlike everything else that comes from here.
TVXCMN_EXPORT ErrBufI* getErrBuf(int version);

// The locale that the process has now (localei.h), as setlocale says; `lcid` is set to its name, whatever it held.
// The same name gives the same object every time. Requires: the name is ASCII (stringc.h). A program chooses its
// locale before it starts threads: the C library does not lock the name.
TVXCMN_EXPORT LocaleI* getLocale(StringC& lcid);

// The configuration (configuration.h), through which the registry is reached. Versions 1 and 2 give the same object.
// Requires: one of them ("(version >= 1) && (version <= 2)"). Otherwise: null.
TVXCMN_EXPORT ConfigurationI* getConfiguration(int version);

// The proxy of OpenSSL (opensslproxy.h). Version 1 is the only one. Every version asked for gives the same
// object, and a greater one is traced if it is the first to be asked for.
TVXCMN_EXPORT OpenSSLI* getOpenSSL(int version);

}   // extern "C"

// The tracer for modules that were built with the first version of its interface.
inline TracerV1I* getTracerV1() { return reinterpret_cast<TracerV1I*>(getTracer(1)); }

#endif   // TVXCMN_TVXCMN_H
