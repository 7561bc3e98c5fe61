#include "filename.h"

#include "assertfatal.h"
#include "file/namemaker.h"
#include "file/pathbytes.h"
#include "stringar.h"
#include "utf8.h"

#include <algorithm>
#include <memory>

namespace {

const size_t NONE = std::string_view::npos;

std::string_view withoutSuffix(std::string_view text, std::string_view suffix)
{
    return text.ends_with(suffix) ? text.substr(0, text.size() - suffix.size()) : text;
}

size_t countLeadingSlashes(std::string_view text)
{
    size_t count = 0;
    while (count < text.size() && text[count] == '/') ++count;
    return count;
}

}   // namespace

// ---- construction -----------------------------------------------------------------------------------

FileNameC::FileNameC(const StringC& name) : path(name) { ProcessName(); }

FileNameC::FileNameC(const StringC& base, const StringC& name) { ComposeName(base, name); }

FileNameC::FileNameC(const FileNameC* parent, StringC name)
{
    if (TVX_CHECK(parent != nullptr, "parent != __null")) {
        FileNameMakerC::compose(*this, bytesOf(parent->path), parent->is_absolute, bytesOf(name));
    } else {
        ComposeName(StringC(), name);
    }
}

FileNameC::FileNameC(const FileNameC* other)
{
    if (other != nullptr) *this = *other;
}

FileNameC::FileNameC(StringArrayC& parts)
{
    size_t size = 0;
    for (size_t i = 0; i < parts.size(); ++i) size += bytesOf(parts[i]).size() + 1;
    PathBufferC joined(size);
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i != 0) joined.append('/');
        joined.append(bytesOf(parts[i]));
    }
    path = textOf(joined.bytes());
    ProcessName();
}

FileNameC::~FileNameC() = default;

void FileNameC::ProcessName()
{
    drive = 0;
    is_UNC = false;
    const std::string_view given = bytesOf(path);
    const size_t leading = countLeadingSlashes(given);
    if (leading != 0) is_absolute = true;
    const std::string_view body = given.substr(leading);
    if (leading == 0 && findDoubledSlash(body) == NONE) return;   // the text may be shared as it is

    PathBufferC buffer(body.size());
    buffer.append(body);
    buffer.resize(collapseSlashes(buffer.begin(), body.size()));
    path = textOf(buffer.bytes());
}

void FileNameC::ComposeName(const StringC& base, StringC name)
{
    FileNameMakerC::compose(*this, bytesOf(base), /*isBaseAbsolute=*/false, bytesOf(name));
}

// A base that says nothing ("." or "") adds nothing, but each "/" at the front of the name still belongs to
// the one that is there. The result is normalised on the way, before a text is made of it.
void FileNameMakerC::compose(FileNameC& result, std::string_view base, bool isBaseAbsolute, std::string_view name)
{
    const bool hasBase = isBaseAbsolute || !base.empty();
    const bool endsInSlash = base.empty() || base.back() == '/';   // the root is nothing but its "/"
    const bool needsSlash = hasBase && !endsInSlash && !name.starts_with('/');
    if (hasBase) name.remove_prefix(countLeadingSlashes(name));
    const bool isNothing = base == "." && !isBaseAbsolute;

    PathBufferC buffer(base.size() + 1 + name.size());
    if (!isNothing) buffer.append(base);
    if (!isNothing && needsSlash) buffer.append('/');
    buffer.append(name);

    const size_t leading = countLeadingSlashes(buffer.bytes());
    char* const body = buffer.begin() + leading;
    result.is_absolute = isBaseAbsolute || leading != 0;
    result.path = textOf({body, collapseSlashes(body, buffer.size() - leading)});
    result.drive = 0;
    result.is_UNC = false;
}

StringC FileNameC::makePath(const StringC& text) const
{
    if (!is_absolute) return text;
    const std::string_view bytes = bytesOf(text);
    PathBufferC buffer(bytes.size() + 1);
    buffer.append('/');
    buffer.append(bytes);
    return textOf(buffer.bytes());
}

FileNameC* FileNameMakerC::makeChild(const FileNameC& parent, std::string_view entry)
{
    const std::string_view directory = bytesOf(parent.path);
    PathBufferC buffer(directory.size() + 1 + entry.size());
    if (!directory.empty() && (parent.is_absolute || directory != ".")) {
        buffer.append(directory);
        buffer.append('/');
    }
    buffer.append(entry);
    return new FileNameC(make(buffer.bytes(), parent.is_absolute));
}

// ---- components -------------------------------------------------------------------------------------

bool FileNameC::isValid() const { return !path.isEmpty(); }

long FileNameC::numComponents() const
{
    const std::string_view bytes = bytesOf(path);
    return bytes.empty() ? 0 : std::count(bytes.begin(), bytes.end(), '/') + 1;
}

StringC FileNameC::getComponent(long num) const
{
    std::string_view rest = bytesOf(path);
    if (!TVX_CHECK(!rest.empty(), "!path.isEmpty()")) return StringC();
    bool isThere = num >= 0;
    for (; isThere && num > 0; --num) {
        const size_t slash = rest.find('/');
        isThere = slash != NONE;
        rest.remove_prefix(isThere ? slash + 1 : 0);
    }
    if (!TVX_CHECK(isThere, "num == -1")) return StringC();
    return textOf(rest.substr(0, rest.find('/')));
}

StringArrayC* FileNameC::getComponents(long first, long num) const
{
    const long pathComponents = numComponents();
    if (!TVX_CHECK(first < pathComponents, "first < pathComponents")) first = pathComponents - 1;
    if (!TVX_CHECK(first >= 0, "first >= 0")) first = 0;
    if (!TVX_CHECK(num != 0, "num != 0")) return nullptr;
    if (num < 0 || num > pathComponents - first) num = pathComponents - first;

    std::unique_ptr<StringArrayC> components(new StringArrayC);
    std::string_view rest = bytesOf(path);
    for (long i = 0; i < first + num; ++i) {
        const size_t slash = rest.find('/');
        if (i >= first) components->add(textOf(rest.substr(0, slash)));
        rest.remove_prefix(slash == NONE ? rest.size() : slash + 1);
    }
    return components.release();
}

StringC FileNameC::getBase(const StringC& suffix) const
{
    return textOf(baseOf(withoutSuffix(bytesOf(path), bytesOf(suffix))));
}

bool FileNameC::matchBase(StringC pattern) const
{
    return matchesWildcard(baseOf(bytesOf(path)), bytesOf(pattern), /*isCaseSensitive=*/true);
}

StringC FileNameC::getExtension(unsigned int sep) const
{
    if (sep == '/' && is_absolute && bytesOf(path).find('/') == NONE) return path;   // the leading one
    if (sep == 0 || sep > 0x7FFFFFFF) return StringC();                              // no text holds it
    UTF8T encoded[6];
    UTF8T* end = encoded;
    UTF8Put(end, sep);
    const std::string_view wanted(reinterpret_cast<const char*>(encoded), static_cast<size_t>(end - encoded));
    const std::string_view bytes = bytesOf(path);
    const size_t at = bytes.rfind(wanted);
    return at == NONE ? StringC() : textOf(bytes.substr(at + wanted.size()));
}

FileNameC FileNameC::withSuffix(const StringC& newSuffix, const StringC& oldSuffix) const
{
    const StringC whole = getPath();
    const std::string_view kept = withoutSuffix(bytesOf(whole), bytesOf(oldSuffix));
    PathBufferC buffer(kept.size() + bytesOf(newSuffix).size());
    buffer.append(kept);
    buffer.append(bytesOf(newSuffix));
    return FileNameC(textOf(buffer.bytes()));
}

StringC FileNameC::getParentPath() const { return makePath(textOf(parentOf(bytesOf(path)))); }

FileNameC FileNameC::getParent() const { return FileNameMakerC::make(parentOf(bytesOf(path)), is_absolute); }

// ---- canonical and relative names -------------------------------------------------------------------

StringC FileNameC::getCanonicalPath() const
{
    const std::string_view bytes = bytesOf(path);
    PathBufferC canonical(bytes.size() + 1);
    if (is_absolute) canonical.append('/');
    canonical.resize(canonical.size() + canonicalise(bytes, canonical.end()));
    return textOf(canonical.bytes());
}

FileNameC FileNameC::getCanonical() const
{
    const std::string_view bytes = bytesOf(path);
    PathBufferC canonical(bytes.size());
    canonical.resize(canonicalise(bytes, canonical.begin()));
    if (canonical.bytes().ends_with('/')) canonical.resize(canonical.size() - 1);
    return FileNameMakerC::make(canonical.bytes(), is_absolute);
}

bool FileNameC::isBaseDir(const FileNameC* base) const
{
    if (!TVX_CHECK(base != nullptr, "base != __null")) return false;
    return base->is_absolute == is_absolute && isAtOrBelow(bytesOf(path), bytesOf(base->path));
}

FileNameC* FileNameC::makeRelativeTo(const FileNameC* base) const
{
    if (!TVX_CHECK(base != nullptr, "base != __null")) return nullptr;
    // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage): a failed assertion never gives true
    (void)TVX_CHECK(base->isAbsolute() == is_absolute, "base->isAbsolute() == is_absolute");
    const std::string_view mine = bytesOf(path);
    const std::string_view theirs = bytesOf(base->path);
    if (mine == theirs) return new FileNameC(FileNameMakerC::make(".", false));
    if (theirs.empty() || !isAtOrBelow(mine, theirs)) return new FileNameC(*this);
    return new FileNameC(FileNameMakerC::make(mine.substr(theirs.size() + 1), false));
}

int FileNameC::compareTo(const FileNameC* other) const
{
    if (!TVX_CHECK(other != nullptr, "other != __null")) return 0;
    if (is_absolute == other->is_absolute) return path.compare(other->path);
    // The first characters differ: one is "/", and the other path begins with none.
    return is_absolute ? StringC(UCS4{'/'}).compare(other->path) : path.compare(StringC(UCS4{'/'}));
}

// ---- patterns and suffixes --------------------------------------------------------------------------

bool FileNameC::wildcardMatch(StringC name, StringC pattern, unsigned char caseSensitive)
{
    return matchesWildcard(bytesOf(name), bytesOf(pattern), caseSensitive != 0);
}

void FileNameC::StripSuffix(StringC& s, const StringC& suffix)
{
    const std::string_view bytes = bytesOf(s);
    const std::string_view kept = withoutSuffix(bytes, bytesOf(suffix));
    if (kept.size() != bytes.size()) s = textOf(kept);
}
