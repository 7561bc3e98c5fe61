// File names against models that work on lists of components and try everything.

#include "filename.h"

#include "fuzz.h"

#include <memory>
#include <vector>

namespace {

using ComponentsT = std::vector<std::string>;

StringC textOf(const std::string& bytes)
{
    return bytes.empty() ? StringC() : StringC(bytes.data(), bytes.size(), StringC::CC_VALID_UTF8);
}
std::string str(const StringC& text) { return std::string(text.utf8(), text.utf8Bytes()); }

ComponentsT splitPath(const std::string& path)
{
    ComponentsT parts;
    std::string part;
    for (const char byte : path + "/") {
        if (byte != '/') {
            part += byte;
        } else if (!part.empty()) {
            parts.push_back(part);
            part.clear();
        }
    }
    return parts;
}

std::string joinPath(const ComponentsT& parts)
{
    std::string path;
    for (const std::string& part : parts) path += (path.empty() ? "" : "/") + part;
    return path;
}

// Up to the "/" that may stay behind a last component of one character.
std::string canonicalModel(const std::string& path)
{
    ComponentsT kept;
    bool hasPopped = false;
    for (const std::string& part : splitPath(path)) {
        if (part == ".") continue;
        if (part == ".." && !kept.empty() && kept.back() != "..") {
            kept.pop_back();
            hasPopped = true;
        } else {
            kept.push_back(part);
        }
    }
    return kept.empty() && hasPopped ? "." : joinPath(kept);
}

// Reachable places of the name, one pattern byte after the other. Both are ASCII.
bool wildcardModel(const std::string& name, const std::string& pattern)
{
    std::vector<bool> reached(name.size() + 1, false);
    reached[0] = true;
    for (const char want : pattern) {
        std::vector<bool> next(name.size() + 1, false);
        for (size_t i = 0; i <= name.size(); ++i) {
            if (want == '*') {
                next[i] = reached[i] || (i > 0 && next[i - 1]);
            } else if (i > 0) {
                next[i] = reached[i - 1] && (want == '?' || want == name[i - 1]);
            }
        }
        reached = next;
    }
    return reached[name.size()];
}

void checkName(const std::string& text)
{
    const FileNameC name(textOf(text));
    const ComponentsT parts = splitPath(text);
    const std::string root = name.isAbsolute() ? "/" : "";
    FUZZ_REQUIRE(name.isAbsolute() == (text.substr(0, 1) == "/"));
    FUZZ_REQUIRE(str(name.Path()) == joinPath(parts));
    FUZZ_REQUIRE(str(name.getPath()) == root + joinPath(parts));
    FUZZ_REQUIRE(name.numComponents() == static_cast<long>(parts.size()));
    for (size_t i = 0; i < parts.size() && i < 20; ++i) {
        FUZZ_REQUIRE(str(name.getComponent(static_cast<long>(i))) == parts[i]);
    }
    FUZZ_REQUIRE(str(name.getBase(StringC())) == (parts.empty() ? "" : parts.back()));

    const FileNameC canonical = name.getCanonical();
    FUZZ_REQUIRE(str(canonical.getPath()) == root + canonicalModel(text));
    FUZZ_REQUIRE(str(canonical.getCanonical().getPath()) == str(canonical.getPath()) || str(canonical.Path()) == ".");
    const std::string path = str(name.getCanonicalPath());
    const std::string bare = root + canonicalModel(text);
    FUZZ_REQUIRE(path == bare || path == bare + "/");
}

void checkPair(const std::string& first, const std::string& second)
{
    const FileNameC base(textOf(first));
    const FileNameC name(&base, textOf(second));
    FUZZ_REQUIRE(str(FileNameC(base.getPath(), textOf(second)).getPath()) == str(name.getPath()));
    FUZZ_REQUIRE(FileNameC(textOf(first)).compareTo(&base) == 0);

    const FileNameC other(textOf(second));
    const ComponentsT above = splitPath(first);
    const ComponentsT below = splitPath(second);
    const bool isBase = base.isAbsolute() == other.isAbsolute() && above.size() <= below.size() &&
                        std::equal(above.begin(), above.end(), below.begin());
    FUZZ_REQUIRE(other.isBaseDir(&base) == isBase);
    if (base.isAbsolute() != other.isAbsolute()) return;
    const std::unique_ptr<FileNameC> relative(other.makeRelativeTo(&base));
    const std::string rest =
        joinPath(ComponentsT(below.begin() + static_cast<long>(isBase ? above.size() : 0), below.end()));
    const bool isChanged = isBase && !above.empty();
    const std::string wanted = above == below ? "." : isChanged ? rest : str(other.getPath());
    FUZZ_REQUIRE(str(relative->getPath()) == wanted);
}

// Bytes as ASCII, rich in what patterns are about.
std::string asPattern(const std::string& bytes)
{
    static const char LETTERS[] = "aab*?*.b";
    std::string text;
    for (const char byte : bytes.substr(0, 200)) text += LETTERS[static_cast<unsigned char>(byte) % 8];
    return text;
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInputC input(data, size);
    const std::string first(input.bytes(input.byte()));
    const std::string second(input.rest());
    checkName(first);
    checkName(second);
    checkPair(first, second);

    const std::string name = asPattern(second);
    const std::string pattern = asPattern(first);
    FUZZ_REQUIRE(FileNameC::wildcardMatch(textOf(name), textOf(pattern), 1) == wildcardModel(name, pattern));
    FUZZ_REQUIRE(FileNameC::wildcardMatch(textOf(second), textOf("*" + second), 0));   // whatever bytes they are
    return 0;
}
