// Loading a preference file against the slow model, and loading again what was saved.

#include "cmnlib/prefsload.h"
#include "cmnlib/prefsmerge.h"
#include "cmnlib/prefsmodel.h"

#include "fuzz.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInputC input(data, size);
    const bool isStrict = input.below(2) != 0;
    const bool isContinued = input.below(2) != 0;
    const std::string text(input.rest());

    PrefsC prefs;
    PrefsModelC model;
    const bool isLoaded = PrefsBytesC::load(prefs, text, "name", isStrict, isContinued);
    FUZZ_REQUIRE(isLoaded == model.load(text, isStrict, isContinued));
    const std::string contents = textOf(liveOf(prefs));
    FUZZ_REQUIRE(contents == textOf(model.live()));
    for (const auto& section : model.live()) {
        for (const auto& key : section.keys)
            FUZZ_REQUIRE(prefs.GetAttr(section.name.c_str(), key.name.c_str(), "") == key.value);
    }

    PrefsC again;
    FUZZ_REQUIRE(PrefsBytesC::load(again, PrefsMergeC::whole(prefs), "name", true));
    FUZZ_REQUIRE(textOf(liveOf(again)) == contents);
    return 0;
}
