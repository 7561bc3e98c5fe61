#include "support/workload.h"

#include <cstdio>

namespace workload {

namespace {

typedef std::vector<std::string_view> WordsT;

const WordsT ASCII_WORDS{
    "configuration", "module",  "agent",   "server", "policy", "schedule", "registry", "timeout",  "connection",
    "certificate",   "error",   "warning", "status", "update", "package",  "the",      "of",       "and",
    "failed",        "started", "in",      "for",    "path",   "value",    "key",      "file",     "is",
    "not",           "found",   "process", "thread", "Config", "Vendor",   "SOFTWARE", "retry",    "confirm",
    "interface",     "with",    "at",      "line",   "host",   "port",     "user",     "inventory"};
const WordsT LATIN1_WORDS{"über",     "größe",  "façade",      "naïve",  "señor",     "crème",      "für",
                          "Änderung", "Öffnen", "Überprüfung", "déjà",   "élève",     "où",         "jalapeño",
                          "fenêtre",  "größer", "möglich",     "später", "Schlüssel", "Datenträger"};
const WordsT GREEK_WORDS{"ρύθμιση",    "σύστημα", "αρχείο", "κατάσταση", "σφάλμα",
                         "διακομιστή", "και",     "το",     "μονάδα",    "κλειδί"};
const WordsT CYRILLIC_WORDS{"настройка", "система", "файл",    "ошибка", "модуль", "состояние", "соединение",
                            "сервер",    "запуск",  "процесс", "пакет",  "ключ",   "значение",  "обновление",
                            "путь",      "и",       "не",      "в",      "на",     "для"};
const WordsT CJK_WORDS{"設定", "システム", "文件",       "错误", "配置文件",     "状态", "서버",
                       "설정", "連接",     "証明書",     "更新", "失敗しました", "进程", "线程",
                       "值",   "登録",     "パッケージ", "路径", "오류",         "모듈"};
const WordsT EMOJI_WORDS{"😀", "🚀", "👍🏽", "⚠️", "🔒", "📦", "✅", "🧪"};

// How often words of a list come, in percent.
struct ShareT {
    const WordsT& words;
    size_t percent;
};
const std::vector<ShareT> ALL_SCRIPTS{{ASCII_WORDS, 40},    {LATIN1_WORDS, 15}, {GREEK_WORDS, 15},
                                      {CYRILLIC_WORDS, 15}, {CJK_WORDS, 13},    {EMOJI_WORDS, 2}};

const WordsT& pickWords(RandomC& random, const std::vector<ShareT>& shares)
{
    size_t at = random.below(100);
    for (const ShareT& share : shares) {
        if (at < share.percent) return share.words;
        at -= share.percent;
    }
    return shares.front().words;
}

// Exactly `size` bytes of words.
std::string textOf(size_t size, uint64_t seed, const std::vector<ShareT>& shares)
{
    RandomC random(seed);
    std::string text;
    for (;;) {
        const std::string_view word = random.pick(pickWords(random, shares));
        if (text.size() + word.size() + 1 > size) break;
        text += word;
        text += ' ';
    }
    text.resize(size, ' ');
    return text;
}

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

SoughtT withNeedle(std::string text, std::string needle, char32_t ch, std::string chUtf8)
{
    const std::string both = needle + chUtf8;
    size_t at = text.size() - 64;
    while (isContinuation(text[at])) --at;
    for (size_t end = at + both.size(); isContinuation(text[end]); ++end) text[end] = ' ';   // no half characters
    text.replace(at, both.size(), both);
    return {std::move(text), std::move(needle), ch, std::move(chUtf8)};
}

struct PairT {
    std::string_view text;
    std::string_view lower;
};
const std::vector<PairT> ASCII_PAIRS{{"Configuration", "configuration"},
                                     {"MODULE", "module"},
                                     {"server", "server"},
                                     {"LOCAL_MACHINE", "local_machine"},
                                     {"Policy", "policy"},
                                     {"timeout=30", "timeout=30"},
                                     {"LogLevel", "loglevel"},
                                     {"the", "the"},
                                     {"ERROR", "error"},
                                     {"value", "value"}};
const std::vector<PairT> MIXED_PAIRS{{"Ρύθμιση", "ρύθμιση"},
                                     {"ΑΡΧΕΙΟ", "αρχειο"},
                                     {"κλειδί", "κλειδί"},
                                     {"Σφάλμα", "σφάλμα"},
                                     {"Настройка", "настройка"},
                                     {"ОШИБКА", "ошибка"},
                                     {"файл", "файл"},
                                     {"Соединение", "соединение"},
                                     {"Größe", "größe"},
                                     {"ÜBERPRÜFUNG", "überprüfung"},
                                     {"élève", "élève"},
                                     {"ŽIVOT", "život"},
                                     {"Čeština", "čeština"},
                                     {"łódź", "łódź"},
                                     {"Configuration", "configuration"},
                                     {"MODULE", "module"},
                                     {"server", "server"},
                                     {"ERROR", "error"}};

CasedT casedText(size_t size, uint64_t seed, const std::vector<PairT>& pairs)
{
    RandomC random(seed);
    CasedT cased;
    for (;;) {
        const PairT& pair = random.pick(pairs);
        if (cased.text.size() + pair.text.size() + 1 > size) break;
        (cased.text += pair.text) += ' ';
        (cased.lower += pair.lower) += ' ';
    }
    cased.text.resize(size, ' ');
    cased.lower.resize(size, ' ');
    return cased;
}

std::vector<std::string> makeShortTexts(size_t length)
{
    std::vector<std::string> texts;
    RandomC random(length);
    while (texts.size() < 64) {
        std::string text;
        while (text.size() < length) (text += random.pick(ASCII_WORDS)) += '/';
        texts.push_back(text.substr(0, length));
    }
    return texts;
}

std::u16string utf16Of(const std::u32string& text)
{
    std::u16string units;
    for (const char32_t ch : text) {
        if (ch < 0x10000) {
            units += static_cast<char16_t>(ch);
        } else {
            units += static_cast<char16_t>(0xD7C0 + (ch >> 10));
            units += static_cast<char16_t>(0xDC00 + (ch & 0x3FF));
        }
    }
    return units;
}

SampleT sampleOf(const char* name, uint64_t seed, const std::vector<ShareT>& shares, bool isLatin1)
{
    SampleT sample{name, textOf(MB, seed, shares), {}, {}, {}};
    sample.utf32 = utf32Of(sample.utf8);
    sample.utf16 = utf16Of(sample.utf32);
    if (isLatin1) sample.latin1.assign(sample.utf32.begin(), sample.utf32.end());
    return sample;
}

}   // namespace

const std::vector<std::string>& shortTexts(size_t length)
{
    static const std::vector<std::string> eight = makeShortTexts(8);
    static const std::vector<std::string> twentyFour = makeShortTexts(24);
    return length == 8 ? eight : twentyFour;
}

const std::string& ascii32()
{
    static const std::string text = textOf(32, 32, {{ASCII_WORDS, 100}});
    return text;
}
const std::string& ascii100()
{
    static const std::string text = textOf(100, 100, {{ASCII_WORDS, 100}});
    return text;
}
const std::string& ascii1k()
{
    static const std::string text = textOf(1024, 1024, {{ASCII_WORDS, 100}});
    return text;
}
const std::string& ascii10k()
{
    static const std::string text = textOf(10000, 3, {{ASCII_WORDS, 100}});
    return text;
}
const std::string& mixed10k()
{
    static const std::string text = textOf(10000, 4, ALL_SCRIPTS);
    return text;
}

const SoughtT& ascii1mb()
{
    static const SoughtT sought = withNeedle(textOf(MB, 1, {{ASCII_WORDS, 100}}), "configured", U'Z', "Z");
    return sought;
}
const SoughtT& mixed1mb()
{
    static const SoughtT sought = withNeedle(textOf(MB, 2, ALL_SCRIPTS), "настройках", U'Ж', "Ж");
    return sought;
}

const std::vector<uint32_t>& indexes10k()
{
    static const std::vector<uint32_t> indexes = [] {
        std::vector<uint32_t> made(10000);
        RandomC random(5);
        for (uint32_t& index : made) index = static_cast<uint32_t>(random.below(10000));
        return made;
    }();
    return indexes;
}

const CasedT& casedAscii(size_t size)
{
    static const CasedT large = casedText(MB, 6, ASCII_PAIRS);
    static const CasedT small = casedText(1024, 8, ASCII_PAIRS);
    return size == MB ? large : small;
}
const CasedT& casedMixed(size_t size)
{
    static const CasedT large = casedText(MB, 7, MIXED_PAIRS);
    static const CasedT small = casedText(1024, 9, MIXED_PAIRS);
    return size == MB ? large : small;
}

const std::vector<std::string>& decimals10k()
{
    static const std::vector<std::string> decimals = [] {
        std::vector<std::string> made;
        RandomC random(11);
        while (made.size() < 10000) {
            const uint64_t number = random.next() >> (5 + random.below(56));
            made.emplace_back(random.below(3) == 0 && number != 0 ? "-" : "");
            made.back() += std::to_string(number);
        }
        return made;
    }();
    return decimals;
}

std::vector<std::string> distinctNames(size_t count)
{
    std::vector<std::string> names;
    RandomC random(1000);
    for (size_t i = 0; i < count; ++i) {
        const std::string_view area = random.pick(ASCII_WORDS);
        const std::string_view item = random.pick(ASCII_WORDS);
        char name[64];
        std::snprintf(name, sizeof name, "K/%.8s/%.16s/%013llx", area.data(), item.data(),
                      static_cast<unsigned long long>(random.next() >> 32) << 21 | i);
        names.emplace_back(name);
    }
    return names;
}

// The generator visits every number once.
std::vector<uint64_t> distinctNumbers(size_t count)
{
    std::vector<uint64_t> numbers(count);
    RandomC random(2000);
    for (uint64_t& number : numbers) number = random.next();
    return numbers;
}

std::vector<uint32_t> shuffledIndexes(size_t count)
{
    std::vector<uint32_t> indexes(count);
    for (size_t i = 0; i < count; ++i) indexes[i] = static_cast<uint32_t>(i);
    RandomC random(77);
    for (size_t i = count; i > 1; --i) std::swap(indexes[i - 1], indexes[random.below(i)]);
    return indexes;
}

const std::vector<SampleT>& samples()
{
    static const std::vector<SampleT> all{sampleOf("ascii", 21, {{ASCII_WORDS, 100}}, true),
                                          sampleOf("latin1", 22, {{ASCII_WORDS, 25}, {LATIN1_WORDS, 75}}, true),
                                          sampleOf("cyrillic", 23, {{CYRILLIC_WORDS, 100}}, false),
                                          sampleOf("cjk", 24, {{CJK_WORDS, 100}}, false),
                                          sampleOf("emoji", 25, {{EMOJI_WORDS, 50}, {ASCII_WORDS, 50}}, false),
                                          sampleOf("mixed", 26, ALL_SCRIPTS, false)};
    return all;
}

std::u32string utf32Of(std::string_view utf8)
{
    std::u32string text;
    for (size_t i = 0; i < utf8.size();) {
        const unsigned first = static_cast<unsigned char>(utf8[i]);
        const size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        char32_t ch = length == 1 ? first : first & (0x7Fu >> length);
        for (size_t k = 1; k < length; ++k) ch = ch << 6 | (static_cast<unsigned char>(utf8[i + k]) & 0x3Fu);
        text += ch;
        i += length;
    }
    return text;
}

}   // namespace workload
