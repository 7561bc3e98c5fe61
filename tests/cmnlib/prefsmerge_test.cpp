#include "cmnlib/prefsmerge.h"

#include "cmnlib/prefsload.h"
#include "errbuf.h"
#include "stringc.h"
#include "support/faults.h"
#include "support/helpers.h"
#include "support/system.h"
#include "tests/cmnlib/prefsmodel.h"
#include "tests/cmnlib/prefssupport.h"
#include "tvxcmn.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

// One change, of the object and of the model alike.
struct ChangeT {
    enum { SET, SET_CLEAN, BARE, ADD, REMOVE_KEY, REMOVE_SECTION, KINDS } kind;
    std::string section;
    std::string key;
    std::string value;
};

void apply(const ChangeT& change, PrefsC& prefs, PrefsModelC& model)
{
    const char* const section = change.section.c_str();
    switch (change.kind) {
    case ChangeT::SET:
    case ChangeT::SET_CLEAN:
        prefs.SetAttr(section, change.key.c_str(), change.value.c_str(), change.kind == ChangeT::SET);
        return model.set(change.section, change.key, change.value, change.kind == ChangeT::SET);
    case ChangeT::BARE:
        prefs.SetAttrWithoutKey(section, change.value.c_str());
        return model.set(change.section, "", change.value, true);
    case ChangeT::ADD: prefs.AddSection(section); return model.add(change.section);
    case ChangeT::REMOVE_KEY:
        prefs.RemoveKey(section, change.key.c_str());
        return model.removeKey(change.section, change.key);
    default: prefs.RemoveSection(section); return model.removeSection(change.section);
    }
}

// Files and changes in which the same few names meet again and again.
class MergeSourceC {
public:
    explicit MergeSourceC(unsigned seed) : m_random(seed) {}

    std::string file()
    {
        static const char* const PIECES[] = {"",        "",          " \t",  ";c",    "  ; k=1", "[", "=1",
                                             " = x",    "text",      " [a]", "[ b ]", "[a] x",   "[", "[c",
                                             "\tk = 2", "\xE9=\xE9", "[]",   "k=\\",  "b"};
        std::string text = m_random.below(8) == 0 ? "\xEF\xBB\xBF" : "";
        for (uint32_t lines = m_random.below(24); lines > 0; --lines) {
            switch (m_random.below(5)) {
            case 0: text += "[" + name() + "]"; break;
            case 1: text += PIECES[m_random.below(std::size(PIECES))]; break;
            default: text += name() + (m_random.below(4) == 0 ? " = " : "=") + std::to_string(m_random.below(9)); break;
            }
            static const char* const ENDS[] = {"\n", "\n", "\n", "\n", "\n", "\n\n", "\r\n", "\r"};
            if (lines > 1 || m_random.below(2) == 0) text += ENDS[m_random.below(std::size(ENDS))];
        }
        return text;
    }
    ChangeT change()
    {
        const auto kind = static_cast<decltype(ChangeT::kind)>(m_random.below(ChangeT::KINDS));
        return {kind, name(), name(), "v" + std::to_string(m_random.below(99))};
    }
    uint32_t below(uint32_t limit) { return m_random.below(limit); }

private:
    std::string name()
    {
        static const char* const NAMES[] = {"a", "b", "k", "K", "key", "A", "\xC3\xA9", "\xC3\x89"};
        return NAMES[m_random.below(std::size(NAMES))];
    }

    TextSourceC m_random;
};

std::string merged(const std::string& loadedFrom, const std::vector<ChangeT>& changes, const std::string& file)
{
    PrefsC prefs;
    PrefsModelC model;
    PrefsBytesC::load(prefs, loadedFrom, "name");
    model.load(loadedFrom, false, false);
    for (const ChangeT& change : changes) apply(change, prefs, model);
    const std::string result = PrefsMergeC::merge(prefs, file);
    EXPECT_EQ(result, model.merge(file));
    return result;
}
std::string merged(const std::string& file, const std::vector<ChangeT>& changes) { return merged(file, changes, file); }

ChangeT set(const char* section, const char* key, const char* value) { return {ChangeT::SET, section, key, value}; }
ChangeT removed(const char* section, const char* key) { return {ChangeT::REMOVE_KEY, section, key, ""}; }

}   // namespace

TEST(PrefsText, namesAreEqualWhenTextsAreButForCase)
{
    TextSourceC source(61);
    for (int i = 0; i < 4000; ++i) {
        const std::string a = source.utf8(5);
        const std::string b = i % 2 == 0 ? source.utf8(2) : std::string(StringC(a.c_str(), "utf8").asUpper().utf8());
        SCOPED_TRACE(hexOf(a) + " / " + hexOf(b));
        ASSERT_EQ(prefstext::areEqual(a, b), StringC(a.c_str(), "utf8").equalCI(StringC(b.c_str(), "utf8")));
        ASSERT_TRUE(!prefstext::areEqual(a, b) || prefstext::hash(a) == prefstext::hash(b));
        const std::string bytes = source.bytes(12);
        ASSERT_TRUE(prefstext::areEqual(bytes, bytes));
    }
    EXPECT_FALSE(prefstext::areEqual("\xE9", "\xC9"));   // Latin-1 is no text
    EXPECT_TRUE(prefstext::areEqual("a\xE9Z", "A\xE9z"));
    EXPECT_EQ(prefstext::hash("a\xE9Z"), prefstext::hash("A\xE9z"));
    EXPECT_FALSE(prefstext::areEqual("\xC1\x81", "\xC1\xA1"));   // "A" and "a" in two bytes are none
    for (int byte = 0; byte < 0x80; ++byte) {                    // only letters may collide, or names could be made to
        const std::string name(9, static_cast<char>(byte));
        const std::string other(9, static_cast<char>(byte ^ 0x20));
        EXPECT_EQ(prefstext::areEqual(name, other), prefstext::hash(name) == prefstext::hash(other)) << name;
    }
}

TEST(PrefsMerge, putsChangesInTheirPlaces)
{
    const struct {
        const char* name;
        const char* file;
        std::vector<ChangeT> changes;
        const char* result;
    } rows[] = {
        {"nothing", "; c\n\n\n[s]\nk = 1 \n\n\n\n", {}, "; c\n\n[s]\nk = 1 \n\n"},
        {"in place", ";c\n[s]\nK = 1\nl=2\n", {set("S", "k", "9")}, ";c\n[s]\nK=9\nl=2\n"},
        {"at the end of the section", "[s]\nk=1\n;c\n[t]\n", {set("s", "n", "2")}, "[s]\nk=1\n;c\nn=2\n[t]\n"},
        {"removed", "[s]\nk=1\nl=2\n", {removed("s", "k")}, "[s]\nl=2\n"},
        {"new section", "[s]\n", {set("n", "a", "1"), set("n", "b", "2")}, "[s]\n\n[n]\n\na=1\nb=2\n"},
        {"removed section", "[s]\nk=1\n;c\nx\n[t]\nl=2\n", {{ChangeT::REMOVE_SECTION, "s", "", ""}}, ";c\n[t]\nl=2\n"},
        {"duplicate key", "[s]\nk=1\nk=2\n", {set("s", "l", "3")}, "[s]\nk=1\nl=3\n"},
        {"repeated header",
         "[s]\na=1\n[t]\nb=2\n[s]\na=3\nc=4\n;c\n",
         {set("s", "d", "5")},
         "[s]\na=1\nc=4\nd=5\n[t]\nb=2\n;c\n"},
        {"header without end", "[s]\na=1\n[t\nb=2\n", {set("s", "b", "9")}, "[s]\na=1\nb=9\n"},
        {"indented header",
         "[x]\na=1\n [y] z\nb=2\n",
         {{ChangeT::REMOVE_SECTION, "x", "", ""}, set("y", "b", "3")},
         " [y] z\nb=3\n"},
        {"blanks in the brackets", "[ s ]\nk=1\n", {set("s", "k", "2")}, "[ s ]\nk=1\n\n[s]\n\nk=2\n"},
        {"mark and bytes",
         "\xEF\xBB\xBF;\xE9\n[s]\nk=\xE9\n",
         {set("s", "l", "\xE9")},
         "\xEF\xBB\xBF;\xE9\n[s]\nk=\xE9\nl=\xE9\n"},
        {"mark behind a line that goes", "[t\n\xEF\xBB\xBF[s]\nk=1\n", {}, "\n\xEF\xBB\xBF[s]\nk=1\n"},
        {"another mark behind it", "[t\n\xFF\xFE[s]\n[s]\n", {}, "\n\xFF\xFE[s]\n[s]\n"},
        {"another mark behind a mark", "\xEF\xBB\xBF\xFE\xFF[s]\n", {}, "\xEF\xBB\xBF\xFE\xFF[s]\n"},
        {"value alone", "[s]\n", {{ChangeT::BARE, "s", "", "x"}, {ChangeT::BARE, "s", "", "x"}}, "[s]\nx\nx\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(merged(row.file, row.changes), row.result);
    }
}

TEST(PrefsMerge, meetsAFileThatSomebodyElseHasChanged)
{
    EXPECT_EQ(merged("[s]\na=1\nb=2\n", {set("s", "b", "3")}, "[t]\nx=1\n"), "[t]\nx=1\n\n[s]\n\nb=3\n");
    EXPECT_EQ(merged("[s]\na=1\n", {set("s", "b", "3")}, "[s]\na=7\nc=8\n"), "[s]\na=7\nc=8\nb=3\n");
    // Both made the section: the later save wins, and still does after the next one.
    const std::string both = merged("", {set("n", "k", "2"), set("n", "l", "3")}, "[n]\nj=0\nk=1\nk=0\n");
    EXPECT_EQ(both, "[n]\nj=0\nk=2\nl=3\n");
    EXPECT_EQ(merged(both, {set("o", "x", "1")}), both + "\n[o]\n\nx=1\n");
}

TEST(PrefsMerge, agreesWithTheModelOnRandomFilesAndChanges)
{
    for (unsigned seed = 1; seed <= 1000; ++seed) {
        SCOPED_TRACE(seed);
        MergeSourceC source(seed);
        const std::string file = source.file();
        std::vector<ChangeT> changes;
        for (uint32_t n = source.below(6); n > 0; --n) changes.push_back(source.change());
        const std::string once = merged(file, changes, source.below(3) == 0 ? source.file() : file);
        merged(once, changes);
        const std::string settled = merged(merged(once, {}), {});   // a dropped header may leave two empty lines
        EXPECT_EQ(merged(settled, {}), settled);
        if (HasFailure()) return;
    }
}

namespace {

// The lines that are not empty; and whether no key and no header comes twice, all lines end alike and headers are plain.
std::string linesOf(const std::string& text, bool* isPlain)
{
    std::string lines;
    std::string section;
    std::set<std::string> names;
    *isPlain = text.find('\r') == std::string::npos;
    for (const std::string& line : splitText(text, '\n')) {
        if (line.empty()) continue;
        lines += line + "\n";
        if (line[0] == ';') continue;
        const size_t equals = line.find('=');
        if (line[0] == '[') section = line;
        if (line[0] == '[' || equals != std::string::npos)
            *isPlain = *isPlain &&
                       names
                           .insert(section +
                                   std::string(StringC(line.substr(0, equals).c_str(), "iso-8859-1").asLower().utf8()))
                           .second;
        if (line[0] == '[' || line[0] == ' ') *isPlain = *isPlain && line.back() == ']';
    }
    return lines;
}

}   // namespace

TEST(PrefsMerge, leavesTheMachinesOwnFilesAsTheyAre)
{
    int plainFiles = 0;
    const auto skip = fs::directory_options::skip_permission_denied;
    for (const char* const root : {"/usr/lib/systemd", "/usr/share", "/etc"}) {
        std::error_code error;
        for (fs::recursive_directory_iterator entry(root, skip, error), end; entry != end; entry.increment(error)) {
            const std::string extension = entry->path().extension();
            if (!entry->is_regular_file(error) ||
                (extension != ".service" && extension != ".timer" && extension != ".socket" &&
                 extension != ".desktop" && extension != ".ini"))
                continue;
            SCOPED_TRACE(entry->path());
            const std::string text = fileText(entry->path());
            bool isPlain = false;
            const std::string lines = linesOf(text, &isPlain);
            const std::string result = merged(text, {});
            bool ignored = false;
            EXPECT_TRUE(!isPlain || linesOf(result, &ignored) == lines) << result;
            plainFiles += isPlain;
        }
    }
    RecordProperty("plainFiles", plainFiles);
}

// ---- saving -------------------------------------------------------------------------------------------

namespace {

const char* const OLD_TEXT = "; c\n[s]\nk=1\n";
const char* const NEW_TEXT = "; c\n[s]\nk=2\n";

struct SavingT {
    SavingT()
    {
        fs::remove_all("d");
        fs::create_directory("d");
        writeFile("d/f.ini", OLD_TEXT);
        EXPECT_TRUE(prefs.Load("d/f.ini"));
        prefs.SetAttr("s", "k", "2");
    }
    // A failure has changed nothing and left nothing, and the next save makes up for it.
    void expectFailure()
    {
        EXPECT_EQ(fileText("d/f.ini"), OLD_TEXT);
        EXPECT_EQ(std::distance(fs::directory_iterator("d"), fs::directory_iterator()), 1);
        expectSuccess();
    }
    void expectSuccess()
    {
        EXPECT_TRUE(prefs.Save(nullptr, true));
        EXPECT_EQ(fileText("d/f.ini"), NEW_TEXT);
        EXPECT_EQ(std::distance(fs::directory_iterator("d"), fs::directory_iterator()), 1);
    }

    PrefsC prefs;
};

}   // namespace

TEST(PrefsSaveFaults, anyFailingCallLeavesTheFileAsItWas)
{
    const struct {
        const char* call;
        int error;
        int skip;
    } rows[] = {{"open", EMFILE, 0}, {"open", EACCES, 0},  {"open", ENOSPC, 1}, {"read", EIO, 0},
                {"read", EIO, 1},    {"write", ENOSPC, 0}, {"write", EIO, 0},   {"fdatasync", EIO, 0},
                {"close", EIO, 1},   {"fchmod", EPERM, 0}, {"rename", EIO, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.call) + " " + std::to_string(row.error));
        SavingT saving;
        const size_t descriptors = openDescriptors();
        const unsigned long before = getErrBuf(1)->count();
        {
            const FaultC fault(row.call, row.error, row.skip);
            EXPECT_FALSE(saving.prefs.Save(nullptr, true));
            EXPECT_GT(fault.calls(), row.skip);
        }
        EXPECT_EQ(getErrBuf(1)->count(), before);
        EXPECT_EQ(openDescriptors(), descriptors);
        saving.expectFailure();
    }
}

TEST(PrefsSaveFaults, interruptedAndShortCallsGoOn)
{
    for (const char* const call : {"open", "read", "write", "fdatasync", "close"}) {
        for (const int error : {EINTR, 0}) {
            SCOPED_TRACE(call);
            SavingT saving;
            const FaultC fault(call, error, 0, 2);
            saving.expectSuccess();
            PrefsC again;
            EXPECT_TRUE(again.Load("d/f.ini"));
            EXPECT_STREQ(again.GetAttr("s", "k", ""), "2");
        }
    }
}

TEST(PrefsSaveFaults, limitsOfTheProcessLoseNothing)
{
    EXPECT_EQ(inChild([] {
                  SavingT saving;
                  std::signal(SIGXFSZ, SIG_IGN);
                  const rlimit none = {4, RLIM_INFINITY};
                  setrlimit(RLIMIT_FSIZE, &none);
                  if (saving.prefs.Save(nullptr, true)) return 1;
                  const rlimit all = {RLIM_INFINITY, RLIM_INFINITY};
                  setrlimit(RLIMIT_FSIZE, &all);
                  rlimit files = {};
                  getrlimit(RLIMIT_NOFILE, &files);
                  const rlimit few = {3, files.rlim_max};
                  setrlimit(RLIMIT_NOFILE, &few);
                  if (saving.prefs.Save(nullptr, true) || saving.prefs.Load("d/f.ini")) return 2;
                  setrlimit(RLIMIT_NOFILE, &files);
                  saving.expectFailure();
                  return testing::Test::HasFailure() ? 3 : 0;
              }),
              0);
}

TEST(PrefsSave, mergingKeepsModeAndOwnerAndReplacesLinks)
{
    SavingT saving;
    fs::permissions("d/f.ini", static_cast<fs::perms>(0640));
    const bool isRoot = geteuid() == 0;
    ASSERT_TRUE(!isRoot || chown("d/f.ini", 12, 34) == 0);
    saving.expectSuccess();
    struct stat info;
    ASSERT_EQ(stat("d/f.ini", &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_TRUE(!isRoot || (info.st_uid == 12 && info.st_gid == 34));

    fs::create_symlink("d/f.ini", "link.ini");
    saving.prefs.SetAttr("s", "k", "3");
    EXPECT_TRUE(saving.prefs.Save("link.ini", true));
    EXPECT_FALSE(fs::is_symlink("link.ini"));
    EXPECT_EQ(fileText("d/f.ini"), NEW_TEXT);
    EXPECT_EQ(fileText("link.ini"), "; c\n[s]\nk=3\n");

    const mode_t mask = umask(027);
    EXPECT_TRUE(saving.prefs.Save("new.ini", true));   // nothing there to merge with
    umask(mask);
    EXPECT_EQ(fileText("new.ini"), "\n[s]\n\nk=3\n");
    ASSERT_EQ(stat("new.ini", &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
}

TEST(PrefsSave, mergingFromAnotherFileWritesInPlace)
{
    SavingT saving;
    writeFile("other.ini", "[s]\nk=5\nl=6\n");
    EXPECT_TRUE(saving.prefs.Save("out.ini", true, "other.ini"));
    EXPECT_EQ(fileText("out.ini"), "[s]\nk=2\nl=6\n");
    EXPECT_TRUE(saving.prefs.Save("other.ini", true, "other.ini"));   // all is read first
    EXPECT_EQ(fileText("other.ini"), "[s]\nk=2\nl=6\n");
    EXPECT_TRUE(saving.prefs.Save("out.ini", true, "missing.ini"));
    EXPECT_EQ(fileText("out.ini"), "\n[s]\n\nk=2\n");
    EXPECT_FALSE(saving.prefs.Save("out.ini", true, "."));
    EXPECT_EQ(fileText("out.ini"), "\n[s]\n\nk=2\n");
    EXPECT_FALSE(saving.prefs.Save("/dev/full", true, "other.ini"));
    EXPECT_FALSE(saving.prefs.Save("/dev/full"));
}
