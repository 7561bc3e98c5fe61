// Group "containers": maps with text and number keys, sorting through a comparison, growing an array.
//
// Tables own their keys. Keys are looked up in random order, as values that share nothing with those in
// the table. Sorts call one comparison through a pointer, with a context.

#include "contemplate.h"
#include "hashmap.h"
#include "quicksort.h"
#include "stringc.h"

#include "support/bench.h"
#include "support/workload.h"

#include <QHash>
#include <QList>
#include <QString>
#include <absl/container/flat_hash_map.h>
#include <absl/container/node_hash_map.h>
#include <algorithm>
#include <boost/unordered_map.hpp>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <glib.h>
#include <memory>
#include <unordered_map>
#include <vector>

using namespace workload;

namespace {

// ---- keys --------------------------------------------------------------------------------------------

template <class KeyT>
struct KeyOfM {
    static KeyT make(const std::string& text) { return KeyT(text); }
    static KeyT make(uint64_t number) { return number; }
};
template <>
StringC KeyOfM<StringC>::make(const std::string& text)
{
    return StringC(text.data(), text.size(), StringC::CC_UTF8);
}
template <>
QString KeyOfM<QString>::make(const std::string& text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// `count` keys that go into the tables and as many that do not, in a library's own type.
template <class KeyT>
struct KeysT {
    std::vector<KeyT> present;    // in the order of insertion
    std::vector<KeyT> shuffled;   // the same, made afresh, in the order of the look-ups
    std::vector<KeyT> absent;

    explicit KeysT(size_t count)
    {
        const auto all = names<KeyT>(count);
        for (size_t i = 0; i < count; ++i) present.push_back(KeyOfM<KeyT>::make(all[i]));
        for (const uint32_t i : shuffledIndexes(count)) shuffled.push_back(KeyOfM<KeyT>::make(all[i]));
        for (size_t i = count; i < 2 * count; ++i) absent.push_back(KeyOfM<KeyT>::make(all[i]));
    }

    static const KeysT& of(size_t count)
    {
        static std::unordered_map<size_t, std::unique_ptr<KeysT>> all;
        std::unique_ptr<KeysT>& keys = all[count];
        if (!keys) keys = std::make_unique<KeysT>(count);
        return *keys;
    }

private:
    template <class T>
    static auto names(size_t count)
    {
        if constexpr (std::is_integral_v<T>) {
            return distinctNumbers(2 * count);
        } else {
            return distinctNames(2 * count);
        }
    }
};

// ---- tables ------------------------------------------------------------------------------------------
// Each stores key -> long: put, get (-1 for none), erase, and the sum of all values.

template <class KeyT, class MapT>
class OursM {
public:
    typedef KeyT Key;
    void put(const KeyT& key, long value) { m_map.put(key, value); }
    long get(const KeyT& key) const
    {
        const auto found = m_map.get(key);
        return found.found() ? found.Value() : -1;
    }
    void erase(const KeyT& key) { m_map.remove(key); }
    long sum() const
    {
        long total = 0;
        auto it = m_map.getIter(true);   // no key is twice in the tables, so nothing has to be hidden
        for (++it; it; ++it) total += it->Value();
        return total;
    }

private:
    MapT m_map;
};

// Everything with the interface of std::unordered_map.
template <class MapT>
class StdLikeM {
public:
    typedef typename MapT::key_type Key;
    void put(const Key& key, long value) { m_map.insert_or_assign(key, value); }
    long get(const Key& key) const
    {
        const auto found = m_map.find(key);
        return found == m_map.end() ? -1 : found->second;
    }
    void erase(const Key& key) { m_map.erase(key); }
    long sum() const
    {
        long total = 0;
        for (const auto& entry : m_map) total += entry.second;
        return total;
    }

private:
    MapT m_map;
};

template <class KeyT>
class QtM {
public:
    typedef KeyT Key;
    void put(const KeyT& key, long value) { m_map.insert(key, value); }
    long get(const KeyT& key) const { return m_map.value(key, -1); }
    void erase(const KeyT& key) { m_map.remove(key); }
    long sum() const
    {
        long total = 0;
        for (auto it = m_map.cbegin(); it != m_map.cend(); ++it) total += *it;
        return total;
    }

private:
    QHash<KeyT, long> m_map;
};

template <class KeyT>
class GLibM {
public:
    typedef KeyT Key;
    GLibM()
        : m_map(IS_TEXT ? g_hash_table_new_full(g_str_hash, g_str_equal, g_free, nullptr)
                        : g_hash_table_new(g_direct_hash, g_direct_equal))
    {
    }
    GLibM(const GLibM&) = delete;
    ~GLibM() { g_hash_table_destroy(m_map); }

    void put(const KeyT& key, long value) { g_hash_table_insert(m_map, ownKey(key), GSIZE_TO_POINTER(value + 1)); }
    long get(const KeyT& key) const { return valueOf(g_hash_table_lookup(m_map, keyOf(key))); }
    void erase(const KeyT& key) { g_hash_table_remove(m_map, keyOf(key)); }
    long sum() const
    {
        long total = 0;
        GHashTableIter it;
        gpointer key;
        gpointer value;
        for (g_hash_table_iter_init(&it, m_map); g_hash_table_iter_next(&it, &key, &value);) total += valueOf(value);
        return total;
    }

private:
    static constexpr bool IS_TEXT = !std::is_integral_v<KeyT>;
    static long valueOf(gpointer value) { return static_cast<long>(GPOINTER_TO_SIZE(value)) - 1; }
    static gconstpointer keyOf(const KeyT& key)
    {
        if constexpr (IS_TEXT) {
            return key.c_str();
        } else {
            return GSIZE_TO_POINTER(key);
        }
    }
    static gpointer ownKey(const KeyT& key)
    {
        if constexpr (IS_TEXT) {
            return g_strdup(key.c_str());
        } else {
            return GSIZE_TO_POINTER(key);
        }
    }

    GHashTable* m_map;
};

// ---- rows of maps ------------------------------------------------------------------------------------

template <class MapT>
std::unique_ptr<MapT> filledMap(const std::vector<typename MapT::Key>& keys)
{
    auto map = std::make_unique<MapT>();
    for (size_t i = 0; i < keys.size(); ++i) map->put(keys[i], static_cast<long>(i));
    return map;
}

template <class MapT>
DigestT sumOfHits(const MapT& map, const std::vector<typename MapT::Key>& keys)
{
    long total = 0;
    for (const auto& key : keys) total += map.get(key);
    return static_cast<DigestT>(total);
}

template <class MapT>
void mapRows(const std::string& kind, const std::string& library, size_t count)
{
    typedef KeysT<typename MapT::Key> K;
    // Filled on first use and kept for all rows that only read.
    const auto full = [count, map = std::make_shared<std::unique_ptr<MapT>>()]() -> const MapT& {
        if (!*map) *map = filledMap<MapT>(K::of(count).present);
        return **map;
    };
    addPreparedRow(
        kind + "_put", library, items(count),
        [count] {
            (void)K::of(count);
            return std::make_unique<MapT>();
        },
        [count](std::unique_ptr<MapT>& map) {
            map = filledMap<MapT>(K::of(count).present);
            return DigestT{1};
        });
    addRow(kind + "_hit", library, items(count), [full, count] { return sumOfHits(full(), K::of(count).shuffled); });
    addRow(kind + "_miss", library, items(count), [full, count] { return sumOfHits(full(), K::of(count).absent); });
    addRow(kind + "_iterate", library, items(count), [full] { return static_cast<DigestT>(full().sum()); });
    addPreparedRow(
        kind + "_erase", library, items(count), [count] { return filledMap<MapT>(K::of(count).present); },
        [count](std::unique_ptr<MapT>& map) {
            for (const auto& key : K::of(count).shuffled) map->erase(key);
            return static_cast<DigestT>(map->sum());
        });
}

// How long each insertion takes while a million elements go in. What a table does at a certain size it does
// each time, and what the machine does in between it does not: the least of three runs counts.
template <class MapT>
std::vector<double> insertionTimes()
{
    typedef std::chrono::steady_clock ClockT;
    const auto& keys = KeysT<typename MapT::Key>::of(1000000).present;
    std::vector<double> least(keys.size(), 1e9);
    for (int run = 0; run < 3; ++run) {
        MapT map;
        for (size_t i = 0; i < keys.size(); ++i) {
            const ClockT::time_point before = ClockT::now();
            map.put(keys[i], static_cast<long>(i));
            least[i] = std::min(least[i], std::chrono::duration<double>(ClockT::now() - before).count());
        }
    }
    return least;
}

template <class MapT>
void insertionRows(const std::string& library)
{
    addTimedRow("longest_insertion_1e6", library, items(1), [] {
        const std::vector<double> times = insertionTimes<MapT>();
        return *std::max_element(times.begin(), times.end());
    });
    addTimedRow("median_insertion_1e6", library, items(1), [] {
        std::vector<double> times = insertionTimes<MapT>();
        const auto middle = times.begin() + static_cast<long>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    });
}

template <class OursT, class TextOrNumberT, class QtKeyT>
void allMaps(const std::string& keys)
{
    typedef TextOrNumberT T;
    for (const auto& [size, count] :
         {std::pair("1e3", size_t{1000}), std::pair("1e5", size_t{100000}), std::pair("1e6", size_t{1000000})}) {
        const std::string kind = keys + "_" + size;
        mapRows<OursT>(kind, "ours", count);
        mapRows<StdLikeM<std::unordered_map<T, long>>>(kind, "std", count);
        mapRows<StdLikeM<absl::flat_hash_map<T, long>>>(kind, "Abseil flat", count);
        mapRows<StdLikeM<absl::node_hash_map<T, long>>>(kind, "Abseil node", count);
        mapRows<StdLikeM<boost::unordered_map<T, long>>>(kind, "Boost", count);
        mapRows<QtM<QtKeyT>>(kind, "Qt", count);
        mapRows<GLibM<T>>(kind, "GLib", count);
    }
}

// ---- sorting -----------------------------------------------------------------------------------------

int compareInts(void* ctx, const void* a, const void* b)
{
    ++*static_cast<size_t*>(ctx);
    const int x = *static_cast<const int*>(a);
    const int y = *static_cast<const int*>(b);
    return (x > y) - (x < y);
}
int compareTexts(void* ctx, const void* a, const void* b)
{
    ++*static_cast<size_t*>(ctx);
    return std::strcmp(*static_cast<const char* const*>(a), *static_cast<const char* const*>(b));
}

// What qsort_r and its like call: the same comparison, with its context last.
struct CallT {
    SortCompareT compare;
    size_t calls;
};
int compareContextLast(const void* a, const void* b, void* call)
{
    CallT* const c = static_cast<CallT*>(call);
    return c->compare(&c->calls, a, b);
}

// `sort(first, count, call)`. Equal elements may end up in any order, so contents count.
template <class T, class SortT>
void sortRow(const std::string& workload, const std::string& library, std::shared_ptr<const std::vector<T>> input,
             SortCompareT compare, SortT sort)
{
    addPreparedRow(
        workload, library, items(input->size()), [input] { return *input; },
        [compare, sort](std::vector<T>& values) {
            CallT call{compare, 0};
            keep(call);
            sort(values.data(), values.size(), call);
            DigestT digest = 0;
            for (size_t i = 0; i < values.size(); i += 997) {
                if constexpr (std::is_pointer_v<T>) {
                    digest = digest * 31 + digestOf(values[i]);
                } else {
                    digest = digest * 31 + static_cast<DigestT>(values[i]);
                }
            }
            return digest;
        });
}

template <class T>
void sortRows(const std::string& workload, std::vector<T> values, SortCompareT compare)
{
    const auto input = std::make_shared<const std::vector<T>>(std::move(values));
    sortRow(workload, "ours", input, compare,
            [](T* first, size_t count, CallT& call) { quicksort(first, count, sizeof(T), call.compare, &call.calls); });
    sortRow(workload, "libc qsort_r", input, compare,
            [](T* first, size_t count, CallT& call) { qsort_r(first, count, sizeof(T), compareContextLast, &call); });
    sortRow(workload, "GLib", input, compare, [](T* first, size_t count, CallT& call) {
        g_qsort_with_data(first, static_cast<int>(count), sizeof(T), compareContextLast, &call);
    });
    sortRow(workload, "std sort", input, compare, [](T* first, size_t count, CallT& call) {
        std::sort(first, first + count, [&](const T& a, const T& b) { return call.compare(&call.calls, &a, &b) < 0; });
    });
}

void allSorts()
{
    const int count = 1000000;
    RandomC random(88);
    std::vector<int> mixed(count);
    std::vector<int> sorted(count);
    for (int& value : mixed) value = static_cast<int>(random.next());
    for (int i = 0; i < count; ++i) sorted[static_cast<size_t>(i)] = i;
    sortRows("sort_1e6_ints_random", mixed, compareInts);
    sortRows("sort_1e6_ints_sorted", sorted, compareInts);
    sortRows("sort_1e6_ints_reversed", std::vector<int>(sorted.rbegin(), sorted.rend()), compareInts);
    sortRows("sort_1e6_ints_equal", std::vector<int>(count, 7), compareInts);

    static const std::vector<std::string> names = distinctNames(100000);
    std::vector<const char*> texts;
    for (const std::string& name : names) texts.push_back(name.c_str());
    sortRows("sort_1e5_texts_random", texts, compareTexts);
    std::sort(texts.begin(), texts.end(), [](const char* a, const char* b) { return std::strcmp(a, b) < 0; });
    sortRows("sort_1e5_texts_sorted", texts, compareTexts);
}

// ---- arrays ------------------------------------------------------------------------------------------

// `run(count)` appends as many pointers one by one and returns how many the array has.
void arrayRow(const std::string& library, size_t (*run)(size_t count))
{
    addRow("append_1e6_pointers", library, items(1000000), [run] { return DigestT{run(1000000)}; });
}

char* const POINTER = nullptr;

void arrayRows()
{
    arrayRow("ours", [](size_t count) {
        ArrayM<char*> array;
        for (size_t i = 0; i < count; ++i) array.add(POINTER);
        keep(array[0]);
        return array.size();
    });
    arrayRow("std", [](size_t count) {
        std::vector<char*> array;
        for (size_t i = 0; i < count; ++i) array.push_back(POINTER);
        keep(array[0]);
        return array.size();
    });
    arrayRow("Qt", [](size_t count) {
        QList<char*> array;
        for (size_t i = 0; i < count; ++i) array.append(POINTER);
        keep(array[0]);
        return static_cast<size_t>(array.size());
    });
    arrayRow("GLib", [](size_t count) {
        GPtrArray* const array = g_ptr_array_new();
        for (size_t i = 0; i < count; ++i) g_ptr_array_add(array, POINTER);
        const size_t size = array->len;
        g_ptr_array_free(array, TRUE);
        return size;
    });
}

}   // namespace

void registerRows()
{
    typedef OursM<StringC, StringMapM<long>> OurTextMapT;
    typedef OursM<uint64_t, HashMapM<uint64_t, long>> OurNumberMapT;
    allMaps<OurTextMapT, std::string, QString>("text");
    allMaps<OurNumberMapT, uint64_t, quint64>("number");
    insertionRows<OurTextMapT>("ours");
    insertionRows<StdLikeM<std::unordered_map<std::string, long>>>("std");
    insertionRows<StdLikeM<absl::flat_hash_map<std::string, long>>>("Abseil flat");
    allSorts();
    arrayRows();
}
