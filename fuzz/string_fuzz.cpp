// A sequence of string operations against the same operations on plain code points. Positions stay within
// the text: what happens beyond it is an assertion, which the tests look at.

#include "fuzz.h"
#include "string/stringmodel.h"

namespace {

using stringmodel::TextT;
using stringmodel::value;

TextT textFrom(FuzzInputC& input)
{
    static const uint32_t LETTERS[] = {'a', 'b', 'B', 'z', 0xE9, 0xDF, 0x416, 0x20AC, 0xFFFD, 0x1F600};
    TextT text(input.below(5));
    for (uint32_t& ch : text) ch = LETTERS[input.below(std::size(LETTERS))];
    return text;
}

// An index into the text, its end included.
size_t placeIn(const TextT& text, FuzzInputC& input)
{
    const size_t number = static_cast<size_t>(input.byte()) * 256 + input.byte();
    return number % (text.size() + 1);
}

// One value in the library, and what it must be.
struct SubjectT {
    StringC text;
    TextT model;
};

void change(SubjectT& subject, FuzzInputC& input)
{
    const TextT other = textFrom(input);
    const size_t at = placeIn(subject.model, input);
    const long len = static_cast<long>(input.below(8)) - 1;
    const size_t mostChars = 4096;   // some changes double the text
    switch (subject.model.size() < mostChars ? input.below(9) : 0) {
    case 0: subject = {value(other), other}; break;
    case 1:
        subject.text += value(other);
        subject.model.insert(subject.model.end(), other.begin(), other.end());
        break;
    case 2:
        for (const uint32_t ch : other) subject.text += UCS4{ch};
        subject.model.insert(subject.model.end(), other.begin(), other.end());
        break;
    case 3:
        subject.text.insert(at, value(other));
        stringmodel::insert(subject.model, at, other);
        break;
    case 4:
        subject.text.remove(at, len);
        if (len != 0) stringmodel::remove(subject.model, at, len);
        break;
    case 5:
        if (!subject.model.empty())
            subject = {subject.text.substr(at, len), stringmodel::substr(subject.model, at, len)};
        break;
    case 6:
        subject = {subject.text.substitute(value(other), value({'x', 0xE9})),
                   stringmodel::substitute(subject.model, other, {'x', 0xE9}, true, -1)};
        break;
    case 7:
        subject = {subject.text.PrefixEscape(value(other), 'b'), stringmodel::prefixEscape(subject.model, other, 'b')};
        break;
    default:
        subject.text += subject.text;
        stringmodel::insert(subject.model, 0, TextT(subject.model));
        break;
    }
}

void ask(const SubjectT& subject, FuzzInputC& input)
{
    const TextT other = textFrom(input);
    const StringC part = value(other);
    const long from = static_cast<long>(placeIn(subject.model, input)) - 1;
    const StringC& text = subject.text;
    switch (input.below(6)) {
    case 0: FUZZ_REQUIRE(text.find(part, from) == stringmodel::find(subject.model, other, from)); break;
    case 1: FUZZ_REQUIRE(text.rfind(part, from) == stringmodel::rfind(subject.model, other, from)); break;
    case 2: FUZZ_REQUIRE(text.findAny(part, from) == stringmodel::findMember(subject.model, other, from, true)); break;
    case 3:
        FUZZ_REQUIRE(text.rfindNot(part, from) == stringmodel::rfindMember(subject.model, other, from, false));
        break;
    case 4: FUZZ_REQUIRE(from < 0 || text[from] == subject.model[static_cast<size_t>(from)]); break;
    default:
        FUZZ_REQUIRE(text.length() == static_cast<long>(subject.model.size()));
        FUZZ_REQUIRE((text == part) == (subject.model == other));
        FUZZ_REQUIRE((text.compare(part) < 0) == (subject.model < other));
        FUZZ_REQUIRE(text.asUpper().asLower().length() == text.length());
        break;
    }
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInputC input(data, size);
    SubjectT subject;
    std::vector<SubjectT> kept;   // copies that later changes must leave alone
    while (!input.isEmpty()) {
        const size_t action = input.below(8);
        if (action < 4) {
            change(subject, input);
        } else if (action < 7) {
            ask(subject, input);
        } else if (kept.size() < 8) {
            kept.push_back(subject);
        }
        FUZZ_REQUIRE(stringmodel::bytesOf(subject.text) == utf8Of(subject.model));
    }
    for (const SubjectT& copy : kept) FUZZ_REQUIRE(stringmodel::bytesOf(copy.text) == utf8Of(copy.model));
    return 0;
}
