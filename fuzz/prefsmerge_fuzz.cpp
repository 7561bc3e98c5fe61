// Merging changes into a file: against the slow model, again into the result, and whether the changes are in force.

#include "cmnlib/prefsload.h"
#include "cmnlib/prefsmerge.h"
#include "cmnlib/prefsmodel.h"

#include "fuzz.h"

#include <iterator>

namespace {

const char* nameOf(FuzzInputC& input)
{
    static const char* const NAMES[] = {"a", "A", "b", "k", "key", "\xC3\xA9", "\xC3\x89", "\xE9"};
    return NAMES[input.below(std::size(NAMES))];
}

void change(FuzzInputC& input, PrefsC& prefs, PrefsModelC& model)
{
    const unsigned kind = input.below(6);
    const char* const section = nameOf(input);
    const char* const key = nameOf(input);
    const std::string value = std::to_string(input.byte());
    switch (kind) {
    case 0:
        model.removeKey(section, key);
        prefs.RemoveKey(section, key);
        break;
    case 1:
        model.removeSection(section);
        prefs.RemoveSection(section);
        break;
    case 2:
        model.add(section);
        prefs.AddSection(section);
        break;
    default:
        model.set(section, key, value, kind != 3);
        prefs.SetAttr(section, key, value.c_str(), kind != 3);
        break;
    }
}

// Whether a load and a merge see the same sections, which they do not when blanks stand inside of brackets, or nothing.
bool hasPlainHeaders(const std::string& text)
{
    for (size_t at = 0; (at = text.find('[', at)) != std::string::npos; ++at) {
        const size_t close = std::min(text.find(']', at), text.size());
        const std::string_view name = prefstext::upToNul(std::string_view(text).substr(at + 1, close - at - 1));
        if (name.empty() || prefstext::trimmed(name) != name) return false;
    }
    return true;
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInputC input(data, size);
    const unsigned changes = input.below(8);
    const bool isChangedElsewhere = input.below(4) == 0;
    FuzzInputC changeInput = input;
    input.bytes(size_t{4} * changes);
    const std::string file(input.rest());
    const std::string loadedFrom = isChangedElsewhere ? file.substr(file.size() / 2) : file;

    PrefsC prefs;
    PrefsModelC model;
    PrefsBytesC::load(prefs, loadedFrom, "name");
    model.load(loadedFrom, false, false);
    for (unsigned n = 0; n < changes; ++n) change(changeInput, prefs, model);

    const std::string merged = PrefsMergeC::merge(prefs, file);
    FUZZ_REQUIRE(merged == model.merge(file));
    const std::string twice = PrefsMergeC::merge(prefs, merged);
    FUZZ_REQUIRE(PrefsMergeC::merge(prefs, twice) == twice);

    PrefsC again;
    PrefsBytesC::load(again, twice, "name");
    // Duplicate keys and repeated headers of a section that was new in memory, or unknown, go when it is no longer; and
    // where a header was dropped two empty lines may meet.
    const std::string plain = PrefsMergeC::merge(again, twice);
    FUZZ_REQUIRE(isChangedElsewhere || plain == twice);
    const std::string settled = PrefsMergeC::merge(again, plain);
    FUZZ_REQUIRE(PrefsMergeC::merge(again, settled) == settled);
    if (!hasPlainHeaders(file)) return 0;
    for (const auto& section : model.live()) {
        for (const auto& key : section.keys) {
            if (key.state != KEY_CHANGE) continue;
            FUZZ_REQUIRE(again.GetAttr(section.name.c_str(), key.name.c_str(), "") == key.value);
        }
    }
    return 0;
}
