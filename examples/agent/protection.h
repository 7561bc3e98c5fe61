// protection.h: what the agent does with a value that nobody else may read.
//
// Thread safety: any thread.
#ifndef AGENT_PROTECTION_H
#define AGENT_PROTECTION_H

#include "stringc.h"

// Encrypts `value` under a new key, decrypts it again, and returns a line for the user about what came of it.
// Without a usable cryptographic module the line says so; that is no failure, and none stays recorded.
StringC protect(const StringC& value);

#endif   // AGENT_PROTECTION_H
