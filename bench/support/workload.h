// workload.h: the inputs of all groups. Everything is generated from fixed seeds, so two runs, and two
// libraries in one run, see the same bytes. Each input is made on first use and lives for ever.
#ifndef TVXCMN_BENCH_WORKLOAD_H
#define TVXCMN_BENCH_WORKLOAD_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace workload {

const size_t MB = 1 << 20;

// splitmix64: small, and the same everywhere.
class RandomC {
public:
    explicit RandomC(uint64_t seed) : m_state(seed) {}
    uint64_t next()
    {
        uint64_t z = m_state += 0x9e3779b97f4a7c15ull;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return z ^ (z >> 31);
    }
    size_t below(size_t limit) { return next() % limit; }
    template <class ListT>
    const auto& pick(const ListT& list)
    {
        return list[below(list.size())];
    }

private:
    uint64_t m_state;
};

// 64 different ASCII texts of `length` (8 or 24) characters.
const std::vector<std::string>& shortTexts(size_t length);
const std::string& ascii32();
const std::string& ascii100();
const std::string& ascii1k();

// Words of one or of six scripts and emoji, separated by blanks.
const std::string& ascii10k();
const std::string& mixed10k();
// What is sought stands once in the 1 MB texts, 64 bytes before the end.
struct SoughtT {
    std::string text;
    std::string needle;   // 10 characters, whose beginning is frequent
    char32_t ch;
    std::string chUtf8;
};
const SoughtT& ascii1mb();
const SoughtT& mixed1mb();
// 10,000 indexes below 10,000.
const std::vector<uint32_t>& indexes10k();

// A text and its lower case, out of words for which simple and full case mapping agree.
struct CasedT {
    std::string text;
    std::string lower;
};
const CasedT& casedAscii(size_t size);   // 1 MB or 1 KB
const CasedT& casedMixed(size_t size);

// 10,000 decimal numbers of 1 to 18 digits, a third of them negative.
const std::vector<std::string>& decimals10k();

// `count` different names of 20 to 40 ASCII characters, and different numbers, in random order. More of
// them begin with the same ones. And the numbers below `count`, shuffled.
std::vector<std::string> distinctNames(size_t count);
std::vector<uint64_t> distinctNumbers(size_t count);
std::vector<uint32_t> shuffledIndexes(size_t count);

// 1 MB of UTF-8 in one script, and the same text in the other forms.
struct SampleT {
    std::string name;
    std::string utf8;
    std::u16string utf16;
    std::u32string utf32;
    std::string latin1;   // empty if the script does not fit
};
const std::vector<SampleT>& samples();

// Plain converter of well-formed UTF-8.
std::u32string utf32Of(std::string_view utf8);

}   // namespace workload

#endif   // TVXCMN_BENCH_WORKLOAD_H
