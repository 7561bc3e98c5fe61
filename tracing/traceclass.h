// traceclass.h: one trace class.
//
// A class is told apart by its parent and the last component of its name, so a path is found component by
// component, and a long path costs no more memory than its text.
//
// Thread safety: latched by the controller, but for the values, whose words any thread may read.
#ifndef TVXCMN_TRACING_TRACECLASS_H
#define TVXCMN_TRACING_TRACECLASS_H

#include "contemplate.h"
#include "hashtbl.h"
#include "tracecontroller.h"

#include <cstddef>

class TraceControlVarC;

// The words of the values are read by trace points without a lock.
template <class T>
T relaxed(const T& word)
{
    return __atomic_load_n(&word, __ATOMIC_RELAXED);
}
template <class T>
void setRelaxed(T& word, T value)
{
    __atomic_store_n(&word, value, __ATOMIC_RELAXED);
}

struct TraceClassKeyT {
    TraceControlVarC* parent;   // null for a class without one
    const char* component;      // `size` bytes
    size_t size;
};

class TraceControlVarC final : public HashElemI, public TraceValuesT {
public:
    TraceControlVarC(const TraceClassKeyT& key, short increment);
    ~TraceControlVarC() override;
    TraceControlVarC(const TraceControlVarC&) = delete;
    TraceControlVarC& operator=(const TraceControlVarC&) = delete;

    ListElemI** next_p() override { return &hash_next; }
    HashValT& hash_r() override { return hash_val; }
    const void* key() const override { return &m_key; }
    BooleanT matches(const void* key, const HashTableC* table) const override;
    static HashValT hashOf(const TraceClassKeyT& key);

    TraceControlVarC* parent() const noexcept { return m_key.parent; }
    // The full name without a detail prefix; made when it is first asked for.
    const char* name();

    ArrayM<TraceControlVarC*> children;   // in the order in which they came into being

private:
    ListElemI* hash_next = nullptr;
    HashValT hash_val = 0;
    const TraceClassKeyT m_key;   // owns the component
    const char* trace_class = nullptr;
};

#endif   // TVXCMN_TRACING_TRACECLASS_H
