#include "dynldc.h"

#include "string/api/textrepair.h"
#include "string/api/utfkernels.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <dlfcn.h>

const char* const DynLoadC::DefaultSuffix = ".so";
const char* const DynLoadC::ClassName = "DynLoadC";

namespace {

// Plain bytes, so that a thread may ask for its message at any time, its own end included. A message is a
// path and a reason.
thread_local char t_lastError[PATH_MAX + 512];

// Copies as many whole characters as fit.
void keep(const StringC& text)
{
    const char* const bytes = text.utf8();
    const size_t size = std::min(text.utf8Bytes(), sizeof t_lastError - 1);
    const size_t whole = utfkernels::validPrefix(reinterpret_cast<const UTF8T*>(bytes), size, nullptr);
    std::memcpy(t_lastError, bytes, whole);
    t_lastError[whole] = 0;
}

}   // namespace

DynLoadC::DynLoadC(StringC name, unsigned char addSuffix)
{
    if (addSuffix != 0) name += DefaultSuffix;
    handle = dlopen(name.utf8(), RTLD_NOW | RTLD_GLOBAL);
}

DynLoadC::~DynLoadC() { Disconnect(); }

bool DynLoadC::Connected() const { return handle != nullptr; }

void* DynLoadC::AddressOfProcedure(const char* symbol)
{
    if (symbol == nullptr || *symbol == 0 || !Connected()) return nullptr;
    return dlsym(handle, symbol);
}

void DynLoadC::Disconnect()
{
    if (!Connected()) return;
    dlclose(handle);
    handle = nullptr;
}

const char* DynLoadC::LastError()
{
    const char* const message = dlerror();
    keep(message != nullptr ? repairedText(message) : StringC());
    return t_lastError;
}
