// Group "files": walking, copying and removing trees and files, reading lines, and joining and cleaning names.
//
// The walks are over the machine's own /usr/share; all other files are made in one directory for temporary
// files, which is removed at the end. They are in the page cache when the clock runs. The limits are the
// calls of the system that the job cannot do without. The time of a program is the processor time that the
// system counts for its process, its start included.

#include "fileservice.h"
#include "streamreader.h"

#include "support/bench.h"
#include "support/process.h"
#include "support/workload.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTextStream>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <fts.h>
#include <ftw.h>
#include <gio/gio.h>
#include <memory>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Where all files are; goes with them.
class ScratchC {
public:
    ScratchC()
    {
        std::string name = (fs::temp_directory_path() / "tvxcmn-bench-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) std::abort();
        m_path = name;
    }
    ~ScratchC()
    {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    std::string path(const char* name) const { return (m_path / name).string(); }

private:
    fs::path m_path;
};

const ScratchC& scratch()
{
    static const ScratchC made;
    return made;
}

FileNameC nameOf(const std::string& path) { return FileNameC(StringC(path.c_str())); }

void write(const std::string& path, std::string_view text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) std::abort();
}

// `width` directories with `width` directories of `files` files of up to 63 bytes; the number of entries.
size_t makeTree(const std::string& root, int width, int files)
{
    const std::string text(64, 'x');
    size_t size = 0;
    for (int i = 0; i < width * width; ++i) {
        const std::string dir =
            root + "/package-" + std::to_string(i / width) + "/component-" + std::to_string(i % width);
        fs::create_directories(dir);
        for (int k = 0; k < files; ++k, ++size) {
            write(dir + "/module_" + std::to_string(k) + ".conf", std::string_view(text).substr(0, size % text.size()));
        }
    }
    const size_t directories = static_cast<size_t>(width) * static_cast<size_t>(width + 1);
    return size + directories;
}

// What a walk saw. Without information the bytes stay 0.
struct SeenT {
    size_t entries = 0;
    size_t bytes = 0;
    DigestT digest() const { return entries << 32 | bytes; }
};
SeenT seenByNftw;   // its callback has no closure

SeenT ourWalk(const std::string& root, bool wantsInfo)
{
    SeenT seen;
    const FileNameC start = nameOf(root);
    FileListerC lister(&start, FileListerC::Recursive);
    for (;;) {
        FileNameC* name = nullptr;
        FileInfoC* info = nullptr;
        const ErrorT error = wantsInfo ? lister.getNext(&name, &info) : lister.getNext(&name);
        if (error != 0) return seen;
        ++seen.entries;
        if (info != nullptr && info->isFile()) seen.bytes += static_cast<size_t>(info->size());
        delete name;
        delete info;
    }
}

SeenT nftwWalk(const std::string& root)
{
    seenByNftw = SeenT();
    ::nftw(
        root.c_str(),
        [](const char*, const struct stat* status, int, FTW* at) {
            if (at->level == 0) return 0;
            ++seenByNftw.entries;
            if (S_ISREG(status->st_mode)) seenByNftw.bytes += static_cast<size_t>(status->st_size);
            return 0;
        },
        64, FTW_PHYS);
    return seenByNftw;
}

SeenT ftsWalk(std::string root, bool wantsInfo)
{
    SeenT seen;
    char* const roots[] = {root.data(), nullptr};
    FTS* const tree = ::fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR | (wantsInfo ? 0 : FTS_NOSTAT), nullptr);
    while (const FTSENT* const entry = ::fts_read(tree)) {
        if (entry->fts_level == 0 || entry->fts_info == FTS_DP) continue;
        ++seen.entries;
        if (wantsInfo && entry->fts_info == FTS_F) seen.bytes += static_cast<size_t>(entry->fts_statp->st_size);
    }
    ::fts_close(tree);
    return seen;
}

SeenT stdWalk(const std::string& root, bool wantsInfo)
{
    SeenT seen;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        ++seen.entries;
        if (wantsInfo && entry.symlink_status().type() == fs::file_type::regular) seen.bytes += entry.file_size();
    }
    return seen;
}

SeenT qtWalk(const std::string& root, bool wantsInfo)
{
    SeenT seen;
    QDirIterator at(QString::fromStdString(root), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (at.hasNext()) {
        at.next();
        ++seen.entries;
        if (!wantsInfo) continue;
        const QFileInfo info = at.fileInfo();
        if (info.isFile() && !info.isSymLink()) seen.bytes += static_cast<size_t>(info.size());
    }
    return seen;
}

// Takes the descriptor.
void plainWalk(int fd, bool wantsInfo, SeenT& seen)
{
    DIR* const dir = ::fdopendir(fd);
    while (const dirent* const entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
        ++seen.entries;
        struct stat status;
        if (wantsInfo && ::fstatat(fd, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode)) {
            seen.bytes += static_cast<size_t>(status.st_size);
        }
        if (entry->d_type != DT_DIR) continue;
        plainWalk(::openat(fd, entry->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC), wantsInfo, seen);
    }
    ::closedir(dir);
}

void walkRows(bool wantsInfo)
{
    static const std::string root = "/usr/share";
    static const size_t size = ftsWalk(root, false).entries;
    const std::string w = wantsInfo ? "walk_with_information" : "walk_names";
    addRow(w, "ours", items(size), [=] { return ourWalk(root, wantsInfo).digest(); });
    addRow(w, "limit", items(size), [=] {
        SeenT seen;
        plainWalk(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), wantsInfo, seen);
        return seen.digest();
    });
    addRow(w, "fts", items(size), [=] { return ftsWalk(root, wantsInfo).digest(); });
    addRow(w, "std", items(size), [=] { return stdWalk(root, wantsInfo).digest(); });
    addRow(w, "Qt", items(size), [=] { return qtWalk(root, wantsInfo).digest(); });
    // It always has the information.
    addRow(w, "nftw", items(size), [=] {
        SeenT seen = nftwWalk(root);
        if (!wantsInfo) seen.bytes = 0;
        return seen.digest();
    });
    addTimedRow(w, "find", items(size), [=] {
        return wantsInfo ? run({"find", root, "-fprintf", "/dev/null", "%s %p\n"})
                         : run({"find", root, "-fprint", "/dev/null"});
    });
}

// 20 MB of ASCII in lines of some 55 characters.
std::string textOfLines()
{
    std::string text;
    for (int i = 0; i < 20; ++i) text += workload::ascii1mb().text;
    workload::RandomC random(31);
    for (char& ch : text) {
        if (ch == ' ' && random.below(8) == 0) ch = '\n';
    }
    text.back() = '\n';
    return text;
}

struct LinesT {
    size_t lines = 0;
    size_t bytes = 0;
    void add(size_t size)
    {
        ++lines;
        bytes += size;
    }
};

template <class ReadT>
void lineRow(const std::string& library, ReadT read)
{
    static const std::string path = scratch().path("lines");
    static const size_t size = [] {
        const std::string text = textOfLines();
        write(path, text);
        return text.size();
    }();
    addRow("read_lines_20mb", library, bytes(size), [=] {
        LinesT seen;
        read(path, seen);
        return DigestT{seen.lines << 32 | seen.bytes};
    });
}

void lineRows()
{
    lineRow("ours", [](const std::string& path, LinesT& seen) {
        const std::unique_ptr<StreamReaderC> reader(
            StreamReaderC::openFile(nameOf(path), false, TextEncodingI::UTF8(), FileStreamC::SHARE_READ, false));
        for (StringC line; reader->readLine(line) == 0;) seen.add(line.utf8Bytes());
    });
    lineRow("limit", [](const std::string& path, LinesT& seen) {
        const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        struct stat status;
        if (::fstat(fd, &status) != 0) std::abort();
        const size_t size = static_cast<size_t>(status.st_size);
        void* const mapped = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
        const char* at = static_cast<const char*>(mapped);
        for (const char* const end = at + size; at < end;) {
            const char* const next = static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
            seen.add(static_cast<size_t>(next - at));
            at = next + 1;
        }
        ::munmap(mapped, size);
        ::close(fd);
    });
    lineRow("std", [](const std::string& path, LinesT& seen) {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) seen.add(line.size());
    });
    lineRow("libc getline", [](const std::string& path, LinesT& seen) {
        std::FILE* const file = std::fopen(path.c_str(), "re");
        char* line = nullptr;
        size_t room = 0;
        for (ssize_t size; (size = ::getline(&line, &room, file)) > 0;) seen.add(static_cast<size_t>(size - 1));
        std::free(line);
        std::fclose(file);
    });
    lineRow("Qt", [](const std::string& path, LinesT& seen) {
        QFile file(QString::fromStdString(path));
        if (!file.open(QIODevice::ReadOnly)) return;
        QTextStream text(&file);
        for (QString line; text.readLineInto(&line);) seen.add(static_cast<size_t>(line.size()));
    });
    lineRow("GLib", [](const std::string& path, LinesT& seen) {
        GFile* const file = g_file_new_for_path(path.c_str());
        GInputStream* const bytes = G_INPUT_STREAM(g_file_read(file, nullptr, nullptr));
        GDataInputStream* const text = g_data_input_stream_new(bytes);
        gsize size;
        while (char* const line = g_data_input_stream_read_line_utf8(text, &size, nullptr, nullptr)) {
            seen.add(size);
            g_free(line);
        }
        g_object_unref(text);
        g_object_unref(bytes);
        g_object_unref(file);
    });
}

// The file of 200 MB that is copied, and its copy.
const std::string& copySource()
{
    static const std::string path = scratch().path("source");
    return path;
}
const std::string& copyTarget()
{
    static const std::string path = scratch().path("copy");
    return path;
}
size_t copySize()
{
    static const size_t size = [] {
        std::string text;
        for (int i = 0; i < 10; ++i) text += textOfLines();
        write(copySource(), text);
        return text.size();
    }();
    return size;
}

const char* const COPY = "copy_200mb";

template <class CopyT>
void copyRow(const std::string& library, CopyT copy)
{
    addPreparedRow(
        COPY, library, bytes(copySize()), [] { return ::unlink(copyTarget().c_str()); },
        [=](int) { return DigestT{copy(copySource(), copyTarget()) && fs::file_size(copyTarget()) == copySize()}; });
}

void copyRows()
{
    copyRow("ours", [](const std::string& from, const std::string& to) {
        FlnFileServiceC service;
        const FileNameC source = nameOf(from);
        const FileNameC target = nameOf(to);
        return service.copyFile(&source, &target, nullptr, nullptr) == 0;
    });
    copyRow("limit", [](const std::string& from, const std::string& to) {
        const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
        const int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        ssize_t copied;
        do {
            copied = ::copy_file_range(in, nullptr, out, nullptr, size_t{1} << 30, 0);
        } while (copied > 0);
        ::close(in);
        ::close(out);
        return copied == 0;
    });
    copyRow("std", [](const std::string& from, const std::string& to) { return fs::copy_file(from, to); });
    copyRow("Qt", [](const std::string& from, const std::string& to) {
        return QFile::copy(QString::fromStdString(from), QString::fromStdString(to));
    });
    addTimedRow(COPY, "cp", bytes(copySize()), [] {
        ::unlink(copyTarget().c_str());
        return run({"cp", copySource(), copyTarget()});
    });
}

const char* const REMOVE = "remove_tree";

// A tree to remove, made anew each time.
const std::string& doomedTree()
{
    static const std::string root = scratch().path("doomed");
    return root;
}
size_t makeDoomedTree() { return makeTree(doomedTree(), 10, 20); }
const size_t DOOMED_SIZE = 2000 + 110;

template <class RemoveT>
void removeRow(const std::string& library, RemoveT remove)
{
    addPreparedRow(REMOVE, library, items(DOOMED_SIZE), makeDoomedTree, [=](size_t) {
        remove(doomedTree());
        return DigestT{::access(doomedTree().c_str(), F_OK) != 0};
    });
}

void removeRows()
{
    removeRow("ours", [](const std::string& root) {
        FlnFileServiceC service;
        const FileNameC name = nameOf(root);
        service.remove(&name, 0, 1);
    });
    removeRow("std", [](const std::string& root) { fs::remove_all(root); });
    removeRow("nftw", [](const std::string& root) {
        ::nftw(
            root.c_str(), [](const char* path, const struct stat*, int, FTW*) { return std::remove(path); }, 64,
            FTW_PHYS | FTW_DEPTH);
    });
    removeRow("Qt", [](const std::string& root) { QDir(QString::fromStdString(root)).removeRecursively(); });
    addTimedRow(REMOVE, "rm", items(DOOMED_SIZE), [] {
        makeDoomedTree();
        return run({"rm", "-r", doomedTree()});
    });
}

// 1,000 absolute names of three to ten components, some of which are ".", ".." or empty.
std::vector<std::string> untidyNames()
{
    static const std::vector<const char*> FILLERS{"/.", "/..", "/", "", "", "", ""};
    std::vector<std::string> names;
    workload::RandomC random(41);
    while (names.size() < 1000) {
        std::string name = "/opt/" + random.pick(workload::shortTexts(8));
        for (size_t i = random.below(7); i > 0; --i) {
            name += random.pick(FILLERS);
            name += "/component" + std::to_string(random.below(1000));
        }
        names.push_back(name + "/file.conf");
    }
    return names;
}

std::vector<std::string> tidyNames()
{
    std::vector<std::string> names = untidyNames();
    for (std::string& name : names) name = fs::path(name).lexically_normal().string();
    return names;
}

// A row that makes a text of each name; the digest is of all of them.
template <class NameT, class MakeT>
void nameRow(const std::string& workload, const std::string& library, const std::vector<std::string>& texts, MakeT make)
{
    std::vector<NameT> names;
    for (const std::string& name : texts) {
        if constexpr (std::is_same_v<NameT, StringC>) {
            names.emplace_back(name.c_str());
        } else if constexpr (std::is_same_v<NameT, QString>) {
            names.push_back(QString::fromStdString(name));
        } else {
            names.emplace_back(name);
        }
    }
    addVerifiedRow(workload, library, items(names.size()), [=](bool whole) {
        std::string all;
        for (const NameT& name : names) {
            const auto made = make(name);
            keep(made);
            if (!whole) continue;
            if constexpr (std::is_same_v<NameT, StringC>) {
                all.append(made.utf8(), made.utf8Bytes());
            } else if constexpr (std::is_same_v<NameT, QString>) {
                all += made.toStdString();
            } else {
                all += made;
            }
        }
        return digestOf(all);
    });
}

std::string taken(char* text)
{
    std::string made(text);
    g_free(text);
    return made;
}

void nameRows()
{
    const std::vector<std::string> untidy = untidyNames();
    const std::vector<std::string> tidy = tidyNames();
    const std::string canonical = "canonicalise_1k_names";
    nameRow<StringC>(canonical, "ours", untidy, [](const StringC& name) { return FileNameC(name).getCanonicalPath(); });
    nameRow<fs::path>(canonical, "std", untidy, [](const fs::path& name) { return name.lexically_normal().string(); });
    nameRow<QString>(canonical, "Qt", untidy, [](const QString& name) { return QDir::cleanPath(name); });
    nameRow<std::string>(canonical, "GLib", untidy,
                         [](const std::string& name) { return taken(g_canonicalize_filename(name.c_str(), "/")); });

    const std::string join = "join_1k_names";
    static const StringC leaf("settings.conf");
    nameRow<StringC>(join, "ours", tidy, [](const StringC& name) { return FileNameC(name, leaf).getPath(); });
    nameRow<fs::path>(join, "std", tidy, [](const fs::path& name) { return (name / "settings.conf").string(); });
    nameRow<std::string>(join, "GLib", tidy, [](const std::string& name) {
        return taken(g_build_filename(name.c_str(), "settings.conf", nullptr));
    });
}

}   // namespace

void registerRows()
{
    walkRows(false);
    walkRows(true);
    lineRows();
    copyRows();
    removeRows();
    nameRows();
}
