// Sources of message catalogs: what can be built is dumped and built again, to the same bytes. Inputs that begin with
// the magic of a catalog are taken for one.

#include "tools/support/utf8text.h"
#include "tools/tvxcat/cataloglint.h"

#include "fuzz.h"

#include <vector>

namespace {

std::vector<CatalogMessageT> messagesOf(const CatalogSourceC& source)
{
    return {source.messages().begin(), source.messages().end()};
}

bool isSame(const std::vector<CatalogMessageT>& a, const std::vector<CatalogMessageT>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const CatalogMessageT& x, const CatalogMessageT& y) {
        return x.set == y.set && x.number == y.number && x.text == y.text;
    });
}

void requireSurvivesDump(const std::vector<CatalogMessageT>& messages)
{
    const std::string dumped = sourceOf(messages);
    FUZZ_REQUIRE(validUtf8(dumped) == dumped.size());
    const CatalogSourceC back("dumped", dumped);
    FUZZ_REQUIRE(back.errors().empty());
    FUZZ_REQUIRE(isSame(messagesOf(back), messages));
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string content(reinterpret_cast<const char*>(data), size);
    std::vector<CatalogMessageT> read;
    if (readCatalog(content, read).empty()) requireSurvivesDump(read);

    const std::vector<CatalogSourceC> sources(1, CatalogSourceC("source", content));
    for (const SourceMessageT& message : sources[0].messages()) {
        FUZZ_REQUIRE(message.text.size() == message.origins.size());
        FUZZ_REQUIRE(message.origins.empty() || message.origins.back() < size);
    }
    lintFaults(sources, &sources[0]);
    if (!buildFaults(sources).empty()) return 0;

    const std::vector<CatalogMessageT> messages = messagesOf(sources[0]);
    requireSurvivesDump(messages);
    read.clear();
    FUZZ_REQUIRE(readCatalog(catalogOf(messages), read).empty());
    FUZZ_REQUIRE(isSame(read, messages));
    return 0;
}
