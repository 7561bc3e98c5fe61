#include "tracing/traceclass.h"

#include "hashfunc.h"

#include <cstring>

namespace {

const char* copyOf(const char* bytes, size_t size)
{
    char* const copy = new char[size + 1];
    std::memcpy(copy, bytes, size);
    copy[size] = 0;
    return copy;
}

}   // namespace

TraceControlVarC::TraceControlVarC(const TraceClassKeyT& key, short increment)
    : TraceValuesT(), m_key{key.parent, copyOf(key.component, key.size), key.size}
{
    detail_incr = increment;
}

TraceControlVarC::~TraceControlVarC()
{
    if (trace_class != m_key.component) delete[] trace_class;
    delete[] m_key.component;
}

BooleanT TraceControlVarC::matches(const void* key, const HashTableC*) const
{
    const TraceClassKeyT& other = *static_cast<const TraceClassKeyT*>(key);
    return m_key.parent == other.parent && m_key.size == other.size &&
           std::memcmp(m_key.component, other.component, m_key.size) == 0;
}

// Paths of equal components, empty ones even, are spread as well as any.
HashValT TraceControlVarC::hashOf(const TraceClassKeyT& key)
{
    const HashValT own = hashBlock(key.component, key.size);
    return key.parent != nullptr ? own + key.parent->hash_val * 0x9E3779B1u + 1 : own;
}

const char* TraceControlVarC::name()
{
    if (trace_class != nullptr) return trace_class;
    if (parent() == nullptr) return trace_class = m_key.component;

    size_t size = m_key.size;
    for (const TraceControlVarC* c = parent(); c != nullptr; c = c->parent()) size += c->m_key.size + 1;
    char* const text = new char[size + 1];
    char* at = text + size;
    *at = 0;
    for (const TraceControlVarC* c = this; c != nullptr; c = c->parent()) {
        at -= c->m_key.size;
        std::memcpy(at, c->m_key.component, c->m_key.size);
        if (at > text && c->parent() != nullptr) *--at = '/';
    }
    return trace_class = text;
}
