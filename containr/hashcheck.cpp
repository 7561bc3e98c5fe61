// The consistency check of a hash table. It stands above the table, because its messages go through the
// library's own formatting.

#include "hashtbl.h"

#include "arglist.h"
#include "stringc.h"

#include <cstdarg>

namespace {

void print(const char* format, ...)
{
    const StringC text(format);
    std::va_list ap;
    va_start(ap, format);
    std::fputs((text % StringC::formatArgs(text, ap)).utf8(), stderr);
    va_end(ap);
}

}   // namespace

BooleanT HashTableC::checkConsistency()
{
    bool consistent = checkMask();
    size_t empty = 0;
    for (size_t n = 0; n < array->size(); ++n) {
        HashElemI* elem = (*array)[n].Head();
        if (elem == nullptr) ++empty;
        for (; elem != nullptr; elem = elem->next()) consistent = checkElement(elem, n) && consistent;
    }
    if (empty_lists != empty) {
        print("empty_lists %d incorrect, should be %d\n", static_cast<int>(empty_lists), static_cast<int>(empty));
        consistent = false;
    }
    if (!consistent) std::fputs("consistency check failed\n", stderr);
    return consistent;
}

bool HashTableC::checkMask()
{
    HashValT mask = 0;
    while (mask < array->size() - 1) mask = mask * 2 + 1;
    if (bits_mask == mask) return true;
    print("bits_mask 0x%lX incorrect, should be 0x%lX\n", static_cast<unsigned long>(bits_mask),
          static_cast<unsigned long>(mask));
    bits_mask = mask;
    return false;
}

bool HashTableC::checkElement(HashElemI* elem, size_t bucket)
{
    const auto complain = [elem](const char* what) {
        std::fputs(what, stderr);
        elem->dump(stderr, ~0u);
        std::fputc('\n', stderr);
        return false;
    };
    bool consistent = true;
    if (hashOf(elem->key()) != elem->hash_r()) consistent = complain("Element hash value wrong: ");
    if (shrinkHash(elem->hash_r()) != bucket) consistent = complain("Element in wrong list: ");
    return consistent;
}
