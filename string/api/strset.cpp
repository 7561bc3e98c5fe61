#include "strset.h"

#include "strkeyed.h"

void StringSetC::add(StringC text)
{
    HashElemI* const displaced = put(new StringSetEntryC(std::move(text)));
    if (displaced != nullptr) displaced->destroy();
}

HashValT StringSetC::hashOf(const void* key) const
{
    return StringKeyedHashC::hashOf(*static_cast<const StringC*>(key), case_indep);
}

BooleanT StringSetEntryC::matches(const void* key, const HashTableC* table) const
{
    return StringKeyedHashC::areEqual(*this, *static_cast<const StringC*>(key),
                                      static_cast<const StringSetC*>(table)->isCaseIndependent());
}

void StringSetEntryC::dump(FILE* stream, unsigned mask) const
{
    HashElemI::dump(stream, mask);
    std::fprintf(stream, "\"%s\"", utf8());
}
