#include "changes.h"

#include "../support/findings.h"
#include "../support/inputfile.h"
#include "../support/utf8text.h"
#include "inilines.h"
#include "names.h"

#include "configuration.h"
#include "confregistry.h"
#include "tvxcmn.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace {

typedef std::chrono::steady_clock ClockT;

struct SectionChangeT {
    std::string section;
    const ChangeT* change;
};

StringC textOf(const std::string& utf8) { return {utf8.data(), utf8.size(), StringC::CC_UTF8}; }

// ---- one file -----------------------------------------------------------------------------------------

// The changes of one file. It is the only one in the registry while they are made, as the whole of one root, so
// that sections are keys of that root and saving everything saves this file.
class FileChangesC {
public:
    explicit FileChangesC(const MountT& mount) : m_mount(mount) {}

    const MountT& mount() const { return m_mount; }
    void add(const std::string& section, const ChangeT& change) { m_changes.push_back({section, &change}); }

    // Makes the changes in memory.
    int make();
    // Saves what has been made.
    int save();
    int waitUntilUnlocked(ClockT::time_point end) const;

private:
    static constexpr unsigned long ROOT = HKEY_LOCAL_MACHINE;
    static constexpr int ROUNDS = 5;

    static ConfRegistryI* registry() { return getConfiguration(2)->registry(); }

    int load() const;
    int makeAll(bool isFirst);
    int makeOne(const SectionChangeT& made, bool isFirst);
    bool isThere(const SectionChangeT& made, const std::string& name) const;
    int refuseUnmergeable() const;
    bool isDone(const SectionChangeT& made) const;
    const ChangeT* findUndone() const;
    int failedChange(const ChangeT& change, const char* why) const;
    int failedSave(int reason) const;

    const MountT& m_mount;
    std::vector<SectionChangeT> m_changes;
};

// The registry takes a file that it cannot read for an empty one.
int FileChangesC::load() const
{
    PrefsC contents;
    const int status = loadFile(m_mount.file, contents);
    if (status != STATUS_DONE) return status;
    if (validUtf8(m_mount.file) != m_mount.file.size()) {
        return failed(STATUS_UNWRITABLE, m_mount.file, "the name of the file is not UTF-8");
    }
    registry()->SetWriteThrough(false);
    if (registry()->AddIniFile(textOf(m_mount.file), registry()->HKEYToShortString(ROOT), "") == 0) return STATUS_DONE;
    return failed(STATUS_UNWRITABLE, m_mount.file, "the file is mounted twice");
}

// When the file has changed on disk the registry reads it again, once in a second of the clock, and drops what has
// not been saved: what took longer than that second is made once more. A change can undo another one where names are
// the same in the end, as "a\\" is "a" when there is no section of the longer name.
int FileChangesC::make()
{
    std::time_t second = std::time(nullptr);
    int status = load();
    const ChangeT* undone = nullptr;
    for (int round = 0; round < ROUNDS && status == STATUS_DONE; ++round) {
        status = makeAll(round == 0);
        undone = findUndone();
        if (std::time(nullptr) == second) break;
        second = std::time(nullptr);
    }
    if (status == STATUS_DONE && undone != nullptr) return failedChange(*undone, "is undone by another one");
    return status == STATUS_DONE ? refuseUnmergeable() : status;
}

// A load finds the section of a header like "[ a ]", and a merge does not: it would save half of the change. One like
// "[]" keeps what follows it from moving with its section.
int FileChangesC::refuseUnmergeable() const
{
    std::string content;
    if (!readFile(m_mount.file, content)) {
        return errno == ENOENT ? STATUS_DONE : failed(STATUS_UNREADABLE, m_mount.file, std::strerror(errno));
    }
    const auto refuse = [this](const IniLinesC& lines, const char* why) {
        return failed(STATUS_UNWRITABLE, m_mount.file + ":" + std::to_string(lines.number()), why);
    };
    for (IniLinesC lines(content); lines.next();) {
        if (lines.isNameless()) return refuse(lines, "a header without a name keeps the file from being changed");
        if (lines.kind() != IniLinesC::HEADER || !lines.hasBlanksInBrackets()) continue;
        for (const SectionChangeT& made : m_changes) {
            const std::string_view key =
                std::string_view(made.section).substr(0, made.section.find_last_not_of('\\') + 1);
            const bool isMeant = made.change->kind == ChangeT::DELETE_TREE ? isAtOrAbove(key, lines.section())
                                                                           : areEqualNames(key, lines.section());
            if (isMeant) return refuse(lines, "blanks inside the brackets keep the section from being changed");
        }
    }
    return STATUS_DONE;
}

int FileChangesC::makeAll(bool isFirst)
{
    for (const SectionChangeT& made : m_changes) {
        const int status = makeOne(made, isFirst);
        if (status != STATUS_DONE) return status;
    }
    return STATUS_DONE;
}

bool FileChangesC::isThere(const SectionChangeT& made, const std::string& name) const
{
    return registry()->ExistsBytes(ROOT, textOf(made.section), textOf(name), nullptr, KEY_READ) == 0;
}

int FileChangesC::makeOne(const SectionChangeT& made, bool isFirst)
{
    const ChangeT& change = *made.change;
    std::string what = change.from + change.key;
    if (!change.name.empty()) what.append(" ").append(change.name);
    if (validUtf8(made.section) != made.section.size() || validUtf8(change.name) != change.name.size()) {
        return failed(STATUS_USAGE, what, "a name is not UTF-8");
    }
    ErrorT result = 0;
    const bool isDeletion = change.kind != ChangeT::SET && change.kind != ChangeT::ADD_KEY;
    if (isDeletion && !isThere(made, change.name)) {
        return isFirst ? failed(STATUS_FINDINGS, what, "not found") : STATUS_DONE;
    }
    const StringC section = textOf(made.section);
    switch (change.kind) {
    case ChangeT::SET:
        result = registry()->CreateBytes(ROOT, section, textOf(change.name), REG_SZ,
                                         reinterpret_cast<const unsigned char*>(change.value.c_str()),
                                         change.value.size() + 1);
        break;
    case ChangeT::DELETE_VALUE: result = registry()->DeleteValue(ROOT, section, textOf(change.name)); break;
    case ChangeT::ADD_KEY: result = registry()->CreateKey(ROOT, section, nullptr); break;
    default: result = registry()->DeleteKey(ROOT, section, change.kind == ChangeT::DELETE_TREE); break;
    }
    if (result == 0) return STATUS_DONE;
    if (result == TVXERR_REGISTRY_NOT_EMPTY)
        return failed(STATUS_FINDINGS, what, "not empty; -r deletes what is in it");
    return failed(STATUS_USAGE, what, "an INI file cannot hold that name or value");
}

// What the registry holds after a save that has succeeded is the new file, until it looks at the disk again, in the
// next second.
int FileChangesC::save()
{
    errno = 0;
    if (registry()->SetWriteThrough(true) != 0) return failedSave(errno);
    const ChangeT* const undone = findUndone();
    if (undone == nullptr) return STATUS_DONE;
    return failedChange(*undone, "had no effect: another process has undone it, or see what check finds");
}

int FileChangesC::failedChange(const ChangeT& change, const char* why) const
{
    return failed(STATUS_UNWRITABLE, m_mount.file, "the change of " + change.key + " " + change.name + " " + why);
}

int FileChangesC::failedSave(int reason) const
{
    if (reason == EAGAIN) return failed(STATUS_LOCKED, m_mount.file, "another process keeps the file locked");
    return failed(STATUS_UNWRITABLE, m_mount.file, reason != 0 ? std::strerror(reason) : "the file cannot be saved");
}

bool FileChangesC::isDone(const SectionChangeT& made) const
{
    const ChangeT& change = *made.change;
    if (change.kind == ChangeT::ADD_KEY) return true;
    if (change.kind != ChangeT::SET) return !isThere(made, change.name);
    std::string value(change.value.size() + 1, '\0');
    unsigned long size = value.size();
    const ErrorT result = registry()->ReadBytes(ROOT, textOf(made.section), textOf(change.name),
                                                reinterpret_cast<unsigned char*>(value.data()), &size, nullptr);
    return result == 0 && value == change.value + '\0';
}

// A change that is not in force, and has not been replaced by a later one; null when there is none.
const ChangeT* FileChangesC::findUndone() const
{
    NameNumbersC later;
    for (size_t i = m_changes.size(); i-- > 0;) {
        const SectionChangeT& made = m_changes[i];
        const ChangeT& change = *made.change;
        const bool isOfKey = change.kind == ChangeT::DELETE_KEY || change.kind == ChangeT::DELETE_TREE;
        const bool isLast = isOfKey ? i + 1 == m_changes.size() : later.get(made.section, change.name) < 0;
        if (isLast && !isDone(made)) return &change;
        if (isOfKey) return nullptr;
        later.set(made.section, change.name, 0);
    }
    return nullptr;
}

// Whoever saves a file holds it for milliseconds, so it comes free again and again unless it is kept.
int FileChangesC::waitUntilUnlocked(ClockT::time_point end) const
{
    const std::string path = m_mount.file + ".lck";
    for (;;) {
        const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
        if (fd < 0) return STATUS_DONE;   // nobody's; or the save will tell
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        const bool isLocked = ::fcntl(fd, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
        ::close(fd);
        if (!isLocked) return STATUS_DONE;
        if (ClockT::now() >= end) {
            return failed(STATUS_LOCKED, m_mount.file,
                          "process " + std::to_string(lock.l_pid) + " keeps the file locked");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

// Brings the changes to their files.
int sortChanges(const MountsC& mounts, const std::vector<ChangeT>& changes, std::vector<FileChangesC>& files)
{
    for (const ChangeT& change : changes) {
        std::string section;
        const MountT* const mount = mounts.holderOf(change.key, section);
        if (mount == nullptr) return failed(STATUS_FINDINGS, change.from + change.key, "no INI file holds this key");
        size_t file = 0;
        while (file < files.size() && &files[file].mount() != mount) ++file;
        if (file == files.size()) files.emplace_back(*mount);
        files[file].add(section, change);
    }
    return STATUS_DONE;
}

}   // namespace

int applyChanges(const MountsC& mounts, const std::vector<ChangeT>& changes, double patience)
{
    std::vector<FileChangesC> files;
    int status = sortChanges(mounts, changes, files);
    // Of several files the first ones must not be saved when a later one will fail for a reason that shows now.
    for (size_t i = 0; files.size() > 1 && i < files.size() && status == STATUS_DONE; ++i) status = files[i].make();

    const auto wait = std::chrono::duration_cast<ClockT::duration>(std::chrono::duration<double>(patience));
    const ClockT::time_point end = ClockT::now() + wait;
    for (size_t i = 0; i < files.size() && status == STATUS_DONE; ++i) status = files[i].waitUntilUnlocked(end);
    for (size_t i = 0; i < files.size() && status == STATUS_DONE; ++i) {
        status = files[i].make();
        if (status == STATUS_DONE) status = files[i].save();
    }
    return status;
}

// ---- where changes come from --------------------------------------------------------------------------

int readImport(const std::string& path, std::vector<ChangeT>& changes)
{
    std::string content;
    if (!readFile(path, content)) return failed(STATUS_UNREADABLE, path, std::strerror(errno));
    std::vector<FindingT> faults;
    for (IniLinesC lines(content); lines.next();) {
        if (lines.kind() == IniLinesC::INVALID) faults.push_back({path, lines.number(), lines.column(), lines.fault()});
        if (lines.kind() == IniLinesC::HEADER && keyOf(lines.section()).empty()) {
            faults.push_back({path, lines.number(), lines.column(), "the header names no key"});
        }
    }
    printFindings(stderr, faults, false);
    if (!faults.empty()) return STATUS_UNREADABLE;

    PrefsC contents;
    const int status = loadFile(path, contents);
    for (const PrefsSectionElem* section = contents.sections(); section != nullptr; section = section->ps_next_p) {
        const std::string key = keyOf(section->ps_name_p);
        changes.push_back({ChangeT::ADD_KEY, key, "", "", path + ": "});
        section->ps_sec_p->ResetIterator();
        while (const PrefsKeyElem* const value = (*section->ps_sec_p)()) {
            changes.push_back({ChangeT::SET, key, value->ke_name_p, value->ke_value_p, path + ": "});
        }
    }
    return status;
}

bool splitWords(const std::string& line, std::vector<std::string>& words)
{
    char quote = '\0';
    bool isInWord = false;
    for (const char ch : line) {
        const bool isBlank = ch == ' ' || ch == '\t' || ch == '\r';
        if (isBlank && quote == '\0') {
            isInWord = false;
            continue;
        }
        if (!isInWord) words.emplace_back();
        isInWord = true;
        if (ch == quote) {
            quote = '\0';
        } else if (quote == '\0' && (ch == '\'' || ch == '"')) {
            quote = ch;
        } else {
            words.back() += ch;
        }
    }
    return quote == '\0';
}
