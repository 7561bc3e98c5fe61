#include "filename.h"

#include "stringar.h"
#include "support/helpers.h"
#include "support/system.h"
#include "tests/file/filesupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fnmatch.h>
#include <memory>
#include <pthread.h>
#include <type_traits>

namespace {

namespace fs = std::filesystem;

static_assert(std::is_constructible_v<FileNameC, const FileNameC*, StringC>);
static_assert(std::is_constructible_v<FileNameC, StringC, StringC>);
static_assert(std::has_virtual_destructor_v<FileNameC>);

std::string joined(const std::string& base, const std::string& name)
{
    const std::string result = str(FileNameC(textOf(base), textOf(name)));
    const FileNameC parent = named(base);
    const bool isNormalised = str(parent) == base;
    EXPECT_EQ(isNormalised ? str(FileNameC(&parent, textOf(name))) : result, result) << base << " " << name;
    return result;
}

std::string componentsOf(const FileNameC& name, long first, long num)
{
    const std::unique_ptr<StringArrayC> parts(name.getComponents(first, num));
    std::string text;
    for (size_t i = 0; i < parts->size(); ++i) text += str((*parts)[i]) + ";";
    return text;
}

// A path of components out of "..", "." and letters, of which no ".." leads above its start when
// `isBounded`.
std::string randomPath(TextSourceC& source, bool isBounded)
{
    static const char* const PARTS[] = {"..", ".", "a", "bc", "...", ".d", "\xC3\xA9", "\xFF"};
    std::string path;
    int depth = 0;
    for (uint32_t count = 1 + source.below(8); count > 0; --count) {
        const uint32_t part = source.below(8);
        if (part == 0 && isBounded && depth == 0) continue;
        depth += part == 0 ? -1 : part == 1 ? 0 : 1;
        path += std::string(path.empty() ? 0 : 1 + source.below(2), '/') + PARTS[part];
    }
    return path;
}

std::string withoutSlash(std::string path)
{
    if (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

// The body runs in a thread that has next to no stack.
void onSmallStack(void (*body)())
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 64 * 1024);
    pthread_t thread;
    const auto run = [](void* argument) -> void* {
        reinterpret_cast<void (*)()>(argument)();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, reinterpret_cast<void*>(body)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

}   // namespace

TEST(FileName, isNormalisedWhenItIsMade)
{
    const struct {
        const char* text;
        const char* path;
        long components;
    } rows[] = {{"", "", 0},
                {"/", "/", 0},
                {"///", "/", 0},
                {"a//b///c/", "a/b/c", 3},
                {"//x", "/x", 1},
                {"/a/b", "/a/b", 2},
                {"a", "a", 1},
                {"./a/..", "./a/..", 3},
                {"a///", "a", 1},
                {"///a//", "/a", 1},
                {"\xFF/\xE9/", "\xFF/\xE9", 2}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const FileNameC name = named(row.text);
        EXPECT_EQ(str(name), row.path);
        EXPECT_EQ(name.isAbsolute(), *row.path == '/');
        EXPECT_EQ("/" + str(name.Path()), (name.isAbsolute() ? "" : "/") + str(name));
        EXPECT_EQ(name.numComponents(), row.components);
        EXPECT_EQ(name.isValid(), row.components > 0);
        EXPECT_EQ(name.isRoot(), std::string_view(row.path) == "/");
        EXPECT_FALSE(name.isUNC() || name.Drive() != 0);
        EXPECT_EQ(str(FileNameC(&name)), row.path);
    }
    EXPECT_EQ(str(FileNameC(static_cast<const FileNameC*>(nullptr))), "");
    StringArrayC parts;
    EXPECT_EQ(str(FileNameC(parts)), "");
    for (const char* part : {"", "usr/", "lib"}) parts.add(StringC(part));
    EXPECT_EQ(str(FileNameC(parts)), "/usr/lib");
}

TEST(FileName, joinsABaseAndAName)
{
    const char* const rows[][3] = {{"a", "b", "a/b"},   {"a/", "b", "a/b"},  {"a", "/b", "ab"},
                                   {"a/", "/b", "a/b"}, {".", "/b", "b"},    {".", "b", "b"},
                                   {".", "//b", "b"},   {"", "/b", "/b"},    {"", "b", "b"},
                                   {"/", "b", "/b"},    {"/", "//b/", "/b"}, {"/a", "", "/a"},
                                   {"a", "", "a"},      {"/.", "b", "/./b"}, {"/", "", "/"},
                                   {"", "", ""},        {".", "", ""},       {"a", "b/../c", "a/b/../c"}};
    for (const auto& row : rows) EXPECT_EQ(joined(row[0], row[1]), row[2]) << row[0] << " and " << row[1];
}

TEST(FileName, twoLiteralsAreABaseAndAName) { EXPECT_EQ(str(FileNameC("utf8", "utf8")), "utf8/utf8"); }

TEST(FileName, canonicalPathsHaveTheirEdges)
{
    const char* const rows[][2] = {{"a/./b", "a/b"},
                                   {"a/b/..", "a/"},
                                   {"ab/c/..", "ab"},
                                   {"a/..", "."},
                                   {"/a/..", "/."},
                                   {"/..", "/.."},
                                   {"../x/../..", "../.."},
                                   {"./.", ""},
                                   {"/./.", "/"},
                                   {"../../x", "../../x"},
                                   {"/../x", "/../x"},
                                   {"x/.", "x/"},
                                   {"xy/.", "xy"},
                                   {"\xC3\xA9/.", "\xC3\xA9/"},
                                   {"", ""},
                                   {"/", "/"},
                                   {"...", "..."},
                                   {"/a/../..", "/.."},
                                   {"a/../b", "b"},
                                   {"./..", ".."},
                                   {"..a/.b", "..a/.b"}};
    for (const auto& row : rows) {
        EXPECT_EQ(str(named(row[0]).getCanonicalPath()), row[1]) << row[0];
        EXPECT_EQ(str(named(row[0]).getCanonical()), withoutSlash(row[1])) << row[0];
    }
    EXPECT_FALSE(named("/a/..").getCanonical().isRoot());
}

TEST(FileName, canonicalPathsAreWhatOthersMakeOfThem)
{
    TextSourceC source(/*seed=*/73);
    std::vector<std::string> command = {"realpath", "-msz", "--"};
    std::vector<std::string> ours;
    for (int i = 0; i < 1000; ++i) {
        const std::string relative = randomPath(source, /*isBounded=*/false);
        const std::string canonical = str(named(relative).getCanonicalPath());
        EXPECT_EQ(canonical.empty() ? "." : withoutSlash(canonical),
                  relative.empty() ? "." : withoutSlash(fs::path(relative).lexically_normal()))
            << relative;
        command.push_back("/" + randomPath(source, /*isBounded=*/true));
        const std::string absolute = str(named(command.back()).getCanonical());
        ours.push_back(absolute == "/." ? "/" : absolute);
    }
    EXPECT_EQ(ours, splitText(programOutput(command), '\0'));
}

TEST(FileName, partsAndParents)
{
    const FileNameC name = named("/usr/lib/a.tar.gz");
    EXPECT_EQ(str(name.getComponent(0)) + str(name.getComponent(2)), "usra.tar.gz");
    EXPECT_EQ(componentsOf(name, 0, -1), "usr;lib;a.tar.gz;");
    EXPECT_EQ(componentsOf(name, 1, 1), "lib;");
    EXPECT_EQ(componentsOf(name, 1, 9), "lib;a.tar.gz;");
    EXPECT_EQ(componentsOf(name, 2, -7), "a.tar.gz;");

    EXPECT_EQ(str(name.getBase(StringC())), "a.tar.gz");
    EXPECT_EQ(str(name.getBase(StringC(".gz"))), "a.tar");
    EXPECT_EQ(str(name.getBase(StringC(".bz"))), "a.tar.gz");
    EXPECT_EQ(str(named("dir/.txt").getBase(StringC(".txt"))), "");
    EXPECT_EQ(str(named("/").getBase(StringC())), "");
    EXPECT_TRUE(name.matchBase(StringC("*.gz")));
    EXPECT_FALSE(name.matchBase(StringC("*.GZ")));
    EXPECT_FALSE(name.matchBase(StringC("usr*")));

    const struct {
        const char* path;
        UCS4 separator;
        const char* extension;
    } rows[] = {{"dir.d/file", '.', "d/file"},
                {"a.b/c", '.', "b/c"},
                {"file", '.', ""},
                {"a.", '.', ""},
                {"/a", '/', "a"},
                {"a", '/', ""},
                {"/", '/', ""},
                {"/a/b", '/', "b"},
                {"a\xC3\xA9z", 0xE9, "z"},
                {"a", 0, ""},
                {"a", ~0u, ""}};
    for (const auto& row : rows) EXPECT_EQ(str(named(row.path).getExtension(row.separator)), row.extension) << row.path;

    EXPECT_EQ(str(name.withSuffix(StringC(".xz"), StringC(".gz"))), "/usr/lib/a.tar.xz");
    EXPECT_EQ(str(name.withSuffix(StringC("~"), StringC(".zip"))), "/usr/lib/a.tar.gz~");
    EXPECT_EQ(str(named("a/b").withSuffix(StringC(), StringC("b"))), "a");
    const char* const parents[][2] = {{"a", ""}, {"/a", "/"}, {"/", "/"}, {"", ""}, {"a/b", "a"}, {"/a/b", "/a"}};
    for (const auto& row : parents) {
        EXPECT_EQ(str(named(row[0]).getParentPath()), row[1]) << row[0];
        EXPECT_EQ(str(named(row[0]).getParent()), row[1]) << row[0];
    }
    StringC text("a.txt");
    FileNameC::StripSuffix(text, StringC("x.txt"));
    EXPECT_EQ(str(text), "a.txt");
    FileNameC::StripSuffix(text, text);
    EXPECT_EQ(str(text), "");
}

TEST(FileName, relativeNamesAndBases)
{
    const struct {
        const char* name;
        const char* base;
        bool isBase;
        const char* relative;
    } rows[] = {{"/u/v/w", "/u", true, "v/w"}, {"/u", "/u", true, "."},     {"/uv", "/u", false, "/uv"},
                {"/u/v", "/", true, "/u/v"},   {"/", "/", true, "."},       {"u/v", "", true, "u/v"},
                {"", "", true, "."},           {"/u", "/u/v", false, "/u"}, {"a/b/c", "a/b", true, "c"},
                {"\xFF/b", "\xFF", true, "b"}};
    for (const auto& row : rows) {
        const FileNameC base = named(row.base);
        EXPECT_EQ(named(row.name).isBaseDir(&base), row.isBase) << row.name << " " << row.base;
        const std::unique_ptr<FileNameC> relative(named(row.name).makeRelativeTo(&base));
        EXPECT_EQ(str(*relative), row.relative) << row.name << " " << row.base;
    }
    const FileNameC absolute = named("/u");
    EXPECT_FALSE(named("u").isBaseDir(&absolute));
}

TEST(FileName, comparesByWholePath)
{
    const char* const inOrder[] = {"",  "!", "-/b", "/",  "/-",       "/a",          "/a/b",
                                   "0", "a", "a/b", "ab", "\xC3\xA9", "\xE2\x82\xAC"};
    for (const char* const& a : inOrder) {
        for (const char* const& b : inOrder) {
            const FileNameC other = named(b);
            const int order = named(a).compareTo(&other);
            EXPECT_EQ((order > 0) - (order < 0), (&a > &b) - (&a < &b)) << a << " " << b;
        }
    }
}

TEST(Wildcard, matchesAsTheSystemDoes)
{
    TextSourceC source(/*seed=*/74);
    const auto text = [&](const char* alphabet, uint32_t letters) {
        std::string result;
        for (uint32_t count = source.below(9); count > 0; --count) result += alphabet[source.below(letters)];
        return result;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::string name = text("abB", 3);
        const std::string pattern = text("abA*?*", 6);
        EXPECT_EQ(FileNameC::wildcardMatch(textOf(name), textOf(pattern), 1),
                  fnmatch(pattern.c_str(), name.c_str(), 0) == 0)
            << name << " " << pattern;
        EXPECT_EQ(FileNameC::wildcardMatch(textOf(name), textOf(pattern), 0),
                  fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD) == 0)
            << name << " " << pattern;
    }
}

TEST(Wildcard, countsCharactersAndStrayBytes)
{
    const struct {
        const char* name;
        const char* pattern;
        bool exact;
        bool folded;
    } rows[] = {{"\xC3\xA9", "?", true, true},     {"\xC3\x89.x", "\xC3\xA9.?", false, true},
                {"\xE9", "?", true, true},         {"\xFF\xFE", "??", true, true},
                {"\xFF\xFE", "?\xFE", true, true}, {"\xFF", "\xFE", false, false},
                {"a\xC3", "a?", true, true},       {"\xE2\x82\xAC", "??", false, false},
                {"\xE2\x82", "??", true, true},    {"[a]", "[a]", true, true},
                {"a/b", "a*b", true, true},        {"\xC3\xA9z", "*?z", true, true}};
    for (const auto& row : rows) {
        EXPECT_EQ(FileNameC::wildcardMatch(textOf(row.name), textOf(row.pattern), 1), row.exact) << hexOf(row.name);
        EXPECT_EQ(FileNameC::wildcardMatch(textOf(row.name), textOf(row.pattern), 0), row.folded) << hexOf(row.name);
    }
}

TEST(FileName, hugePathsNeedNoStack)
{
    onSmallStack([] {
        std::string path;
        for (int i = 0; i < 500000; ++i) path += "a/";
        const FileNameC deep = named(path);
        EXPECT_EQ(deep.numComponents(), 500000);
        EXPECT_EQ(str(deep.getCanonicalPath()), path.substr(0, path.size() - 1));
        EXPECT_TRUE(deep.isBaseDir(&deep));
        EXPECT_EQ(str(deep.getComponent(499999)), "a");
        EXPECT_TRUE(named(std::string(1000000, '/')).isRoot());
        std::string up = path;
        for (int i = 0; i < 500000; ++i) up += "../";
        EXPECT_EQ(str(named(up).getCanonicalPath()), ".");
        std::string stars;
        for (int i = 0; i < 10000; ++i) stars += "*a";
        EXPECT_TRUE(FileNameC::wildcardMatch(textOf(path), textOf(stars + "*"), 1));
        EXPECT_FALSE(FileNameC::wildcardMatch(textOf(path), textOf(stars + "b"), 1));
    });
}

TEST(FileNameDeathTest, namesThatAreNotThereAreAssertions)
{
    const FileNameC name = named("a/b");
    const FileNameC absolute = named("/a");
    const auto ended = testing::ExitedWithCode(1);
    EXPECT_EXIT(FileNameC(static_cast<const FileNameC*>(nullptr), StringC("a")), ended,
                "\\(parent != __null\\) failed");
    EXPECT_EXIT(FileNameC().getComponent(0), ended, "\\(!path.isEmpty\\(\\)\\) failed");
    EXPECT_EXIT(name.getComponent(2), ended, "\\(num == -1\\) failed");
    EXPECT_EXIT((void)name.getComponents(2, 1), ended, "\\(first < pathComponents\\) failed");
    EXPECT_EXIT((void)name.makeRelativeTo(&absolute), ended, "\\(base->isAbsolute\\(\\) == is_absolute\\) failed");
}
