// formatvalues.h: the arguments of one formatting, converted to what directives ask for.
//
// Each conversion accepts certain kinds of arguments. An argument of another kind ("Type mismatch in
// string formatting") and one that is missing ("a != 0") give the neutral value that stands beside the
// conversion.
//
// Thread safety: unlocked.
#ifndef TVXCMN_STRING_IMPL_FORMATVALUES_H
#define TVXCMN_STRING_IMPL_FORMATVALUES_H

#include "arglist.h"
#include "basetypes.h"

class FormatOutputC;

class FormatValuesC {
public:
    // List and output must outlive the object. The output is flushed before anything fails.
    FormatValuesC(const ArgListC& args, FormatOutputC& out) noexcept : m_args(args), m_out(out) {}

    // The argument at the running index, which moves on; null when it is missing.
    const ArgC* next() noexcept { return m_args[m_next++]; }
    const ArgC* nth(long index) const noexcept { return m_args[index]; }
    void setNext(long index) noexcept { m_next = index; }

    int starValue(const ArgC* a) const;   // a width or precision; 0
    // 0; most arguments are of the first kind
    long signedValue(const ArgC* a) const
    {
        return a != nullptr && a->type() == ArgC::Int32 ? a->asInt32() : otherSignedValue(a);
    }
    unsigned long unsignedValue(const ArgC* a) const;   // 0
    UCS4 characterValue(const ArgC* a) const;           // a blank
    const void* pointerValue(const ArgC* a) const;      // null
    timeval timeValue(const ArgC* a) const;             // the start of 1970

    // Raises the assertion for an argument that a conversion cannot use, null when it is missing.
    void refuse(const ArgC* a) const;

private:
    long otherSignedValue(const ArgC* a) const;
    template <class ValueT>
    ValueT neutral(const ArgC* a, ValueT value) const;

    const ArgListC& m_args;
    FormatOutputC& m_out;
    long m_next = 0;
};

#endif   // TVXCMN_STRING_IMPL_FORMATVALUES_H
