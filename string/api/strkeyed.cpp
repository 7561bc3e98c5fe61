#include "strkeyed.h"

BooleanT StringKeyedHashElemC::matches(const void* key, const HashTableC* table) const
{
    return StringKeyedHashC::areEqual(keyval, *static_cast<const StringC*>(key),
                                      static_cast<const StringKeyedHashC*>(table)->isCaseIndependent());
}

void StringKeyedHashElemC::dump(FILE* stream, unsigned mask) const
{
    HashElemI::dump(stream, mask);
    std::fprintf(stream, "\"%s\"", keyval.utf8());
}
