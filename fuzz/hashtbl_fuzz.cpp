// A map agrees with a plain model of it, through its typed operations and through those of the table.

#include "hashmap.h"

#include "fuzz.h"

#include <unordered_map>
#include <utility>
#include <vector>

namespace {

// Different keys share hash values, not only buckets.
struct CoarseHashT {
    HashValT operator()(const unsigned long& key) const { return static_cast<HashValT>(key / 3) * 0x9E3779B1u; }
};
typedef HashMapM<unsigned long, long, CoarseHashT> MapT;
typedef MapT::ElemT ElemT;

class MapAndModelC {
public:
    void step(FuzzInputC& input);
    void check();

private:
    void add(unsigned long key);
    void addMany(unsigned long first);
    void put(unsigned long key);
    void remove(unsigned long key);
    void removeElem(unsigned long key);
    void removeEach(long divisor);
    void clear();
    void checkKey(unsigned long key);

    // Every value is there once only.
    std::vector<long>& valuesOf(unsigned long key) { return m_model[key]; }
    bool isKnown(unsigned long key) const { return m_model.count(key) != 0; }
    void forget(unsigned long key, long value);

    std::vector<MapT::ResultT> m_held;   // elements that were taken out; they outlive the map
    MapT m_map;
    std::unordered_map<unsigned long, std::vector<long>> m_model;   // the values of each key, the newest last
    size_t m_count = 0;
    long m_value = 0;
};

void MapAndModelC::step(FuzzInputC& input)
{
    const unsigned operation = input.below(16);
    const unsigned long key = input.byte();
    switch (operation) {
    case 0: return clear();
    case 1: return m_held.clear();
    case 2: return m_map.grow();
    case 3: return removeEach(static_cast<long>(key % 5 + 1));
    case 4: return addMany(key * 256);
    case 5: return removeElem(key);
    case 6:
    case 7: return remove(key);
    case 8:
    case 9: return put(key);
    case 10:
    case 11: return checkKey(key);
    default: return add(key);
    }
}

void MapAndModelC::add(unsigned long key)
{
    m_map.add(key, ++m_value);
    valuesOf(key).push_back(m_value);
    ++m_count;
}

// So that there are more buckets than the table keeps in one piece, and not many more.
void MapAndModelC::addMany(unsigned long first)
{
    const size_t most = 3000;
    if (m_count >= most) return;
    for (unsigned long i = 0; i < 256; ++i) add(first + i);
}

void MapAndModelC::put(unsigned long key)
{
    const MapT::ResultT displaced = m_map.put(key, ++m_value);
    FUZZ_REQUIRE(displaced.found() == isKnown(key));
    if (displaced.found()) {
        FUZZ_REQUIRE(displaced.Key() == key && displaced.Value() == valuesOf(key).back());
        forget(key, displaced.Value());
    }
    valuesOf(key).push_back(m_value);
    ++m_count;
    m_held.push_back(displaced);   // a copy, with an element of its own
}

void MapAndModelC::remove(unsigned long key)
{
    MapT::ResultT removed = m_map.remove(key);
    FUZZ_REQUIRE(removed.found() == isKnown(key));
    if (!removed.found()) return;
    FUZZ_REQUIRE(removed.Key() == key && removed.Value() == valuesOf(key).back());
    forget(key, removed.Value());
    m_held.push_back(std::move(removed));
}

void MapAndModelC::removeElem(unsigned long key)
{
    ElemT* const elem = static_cast<ElemT*>(m_map.HashTableC::get(&key));
    FUZZ_REQUIRE((elem != nullptr) == isKnown(key));
    FUZZ_REQUIRE(HashTableC::removeElem(elem) == (elem != nullptr));
    if (elem == nullptr) return;
    FUZZ_REQUIRE(!elem->inSomeTable() && !HashTableC::removeElem(elem));
    forget(key, elem->Value());
    elem->destroy();
}

// Takes out what `divisor` divides, in one walk.
void MapAndModelC::removeEach(long divisor)
{
    HashIteratorC it(&m_map, true);
    long status;
    for (HashElemI* elem = it.next(status); elem != nullptr;) {
        const ElemT* const typed = static_cast<ElemT*>(elem);
        if (typed->Value() % divisor != 0) {
            elem = it.next(status);
            continue;
        }
        FUZZ_REQUIRE(it.remove(status) == elem && status == 0);
        forget(typed->Key(), typed->Value());
        elem->destroy();
        elem = it.current(status);
    }
    FUZZ_REQUIRE(status == 0);
}

void MapAndModelC::clear()
{
    m_map.clear();
    m_model.clear();
    m_count = 0;
}

// The values of a key, newest first.
void MapAndModelC::checkKey(unsigned long key)
{
    FUZZ_REQUIRE(m_map.exists(key) == isKnown(key));
    if (!isKnown(key)) return;
    const std::vector<long>& values = valuesOf(key);
    FUZZ_REQUIRE(m_map.get(key).Value() == values.back());
    const HashTableC& table = m_map;
    HashElemI* elem = table.get(&key);
    for (auto value = values.rbegin(); value != values.rend(); ++value) {
        FUZZ_REQUIRE(elem != nullptr && static_cast<ElemT*>(elem)->Value() == *value);
        elem = table.next(elem, &key);
    }
    FUZZ_REQUIRE(elem == nullptr);
}

void MapAndModelC::forget(unsigned long key, long value)
{
    std::vector<long>& values = valuesOf(key);
    const auto found = std::find(values.begin(), values.end(), value);
    FUZZ_REQUIRE(found != values.end());
    values.erase(found);
    if (values.empty()) m_model.erase(key);
    --m_count;
}

// Walks meet every element once, the newest of equal keys first, or those alone.
void MapAndModelC::check()
{
    FUZZ_REQUIRE(m_map.checkConsistency());
    FUZZ_REQUIRE(m_map.size() == m_count);
    std::unordered_map<unsigned long, size_t> met;
    MapT::IteratorT all = m_map.getIter(true);
    for (++all; all; ++all) {
        const std::vector<long>& values = valuesOf(all->Key());
        const size_t before = met[all->Key()]++;
        FUZZ_REQUIRE(before < values.size() && values[values.size() - 1 - before] == all->Value());
    }
    FUZZ_REQUIRE(m_map.values().size() == m_count && met.size() == m_model.size());

    size_t newest = 0;
    MapT::IteratorT it = m_map.getIter();
    for (++it; it; ++it, ++newest) FUZZ_REQUIRE(valuesOf(it->Key()).back() == it->Value());
    FUZZ_REQUIRE(newest == m_model.size());
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const unsigned BATCH = 256;
    FuzzInputC input(data, size);
    MapAndModelC both;
    while (!input.isEmpty()) {
        for (unsigned i = 0; i < BATCH && !input.isEmpty(); ++i) both.step(input);
        both.check();
    }
    return 0;
}
