#include "confapi/impl/confreginifile.h"

#include "cmnlib/errnokeeper.h"
#include "cmnlib/prefsfile.h"
#include "cmnlib/prefsload.h"
#include "cmnlib/prefsmerge.h"
#include "confapi/impl/keynames.h"
#include "confapi/impl/pendingchanges.h"
#include "fileservice.h"
#include "string/api/textrepair.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

using keynames::bytesOf;

namespace {

const unsigned LOCK_TRIES = 20;
const unsigned MERGE_ROUNDS = 5;

}   // namespace

ConfRegIniFileC::ConfRegIniFileC(const FileNameC& path, const StringC& rootKey, const StringC& subKey)
    : m_path(path),
      m_rootKey(rootKey),
      m_subKey(subKey),
      m_lock(FileNameC(path.getPath() + ".lck")),
      m_baseKey(subKey.isEmpty() ? rootKey : rootKey + "\\" + subKey),
      m_pathBytes(path.getPath().utf8()),
      m_temporary(m_pathBytes + ".tmp")
{
    reload(false);
}

// ---- reading ------------------------------------------------------------------------------------------

ConfRegIniFileC::StampT ConfRegIniFileC::stampOf(const struct stat& info)
{
    return {info.st_mtim.tv_nsec, info.st_ino, info.st_size};
}

// The second alone would miss who writes in the same second as we have read.
bool ConfRegIniFileC::isAsRead(const struct stat& info) const
{
    return info.st_mtim.tv_sec < 1 || (info.st_mtim.tv_sec == m_lastMod && stampOf(info) == m_lastStamp);
}

void ConfRegIniFileC::reload(bool force)
{
    const time_t now = ::time(nullptr);
    if (!force && m_lastCheck == now) return;
    const ErrnoKeeperC keeper;
    struct stat info;
    if (::stat(m_pathBytes.c_str(), &info) == 0 && (force || !isAsRead(info))) load();
    m_lastCheck = now;
}

void ConfRegIniFileC::load()
{
    std::string text;
    struct stat info;
    if (readWholeFile(m_pathBytes.c_str(), text, &info) == 0) {
        take(std::move(text), info);
    } else {
        m_lastMod = 0;   // so that it is tried again
    }
}

// What could not be saved is changed again in the new contents.
void ConfRegIniFileC::take(std::string&& text, const struct stat& info)
{
    PendingChangesC pending;
    if (m_hasFailedToSave) pending.collect(m_confData);
    PrefsBytesC::load(m_confData, std::move(text), m_pathBytes.c_str());
    m_texts.clear();
    m_tree.clear();
    pending.applyTo(m_confData);
    setChanged();
    m_lastMod = info.st_mtim.tv_sec;
    m_lastStamp = stampOf(info);
}

void ConfRegIniFileC::setChanged()
{
    ++m_generation;
    m_valuesSection = nullptr;
}

bool ConfRegIniFileC::addSection(const StringC& name)
{
    const bool isBack = m_confData.FindSection(name.utf8(), true) != nullptr;
    if (!m_confData.AddSection(name.utf8())) return false;
    m_tree.add(section(name)->ps_name_p, isBack);
    setChanged();
    return true;
}

void ConfRegIniFileC::removeKey(const StringC& name)
{
    std::string_view rest;
    for (const PrefsSectionElem* each = m_confData.sections(); each != nullptr; each = each->ps_next_p) {
        const std::string_view path = each->ps_name_p;
        if (each->ps_dirty == SEC_REMOVE) continue;
        if (!prefstext::areEqual(path, bytesOf(name)) && !keynames::descendantOf(path, bytesOf(name), rest)) continue;
        m_confData.RemoveSection(each->ps_name_p);
        m_tree.remove(path);
    }
    setChanged();
}

bool ConfRegIniFileC::hasKeysBelow(const StringC& name)
{
    if (!m_tree.isBuilt()) m_tree.build(m_confData);
    return m_tree.isAncestor(bytesOf(name));
}

const std::vector<StringC>* ConfRegIniFileC::childrenOf(const StringC& name)
{
    if (!m_tree.isInOrder()) m_tree.build(m_confData);
    return m_tree.childrenOf(bytesOf(name));
}

const std::vector<const PrefsKeyElem*>& ConfRegIniFileC::valuesOf(const StringC& name)
{
    const PrefsSectionElem* const found = section(name);
    if (found != nullptr && found == m_valuesSection) return m_values;
    m_valuesSection = found;
    m_values.clear();
    if (found == nullptr) return m_values;
    for (PrefsKeyElem** key = m_confData.GetKeyElems(name.utf8()); key != nullptr && *key != nullptr; ++key)
        m_values.push_back(*key);
    return m_values;
}

// A value that is set again and again has one place among the texts.
const StringC& ConfRegIniFileC::textOf(PrefsKeyElem& key)
{
    if (!key.m_isTextGood) {
        if (key.m_text == 0) {
            m_texts.emplace_back();
            key.m_text = static_cast<uint32_t>(m_texts.size());
        }
        m_texts[key.m_text - 1] = repairedText(key.ke_value_p);
        key.m_isTextGood = true;
    }
    return m_texts[key.m_text - 1];
}

// ---- writing ------------------------------------------------------------------------------------------

bool ConfRegIniFileC::makeDirectory() const
{
    const FileNameC directory = m_path.getParent();
    if (!directory.isAbsolute() && directory.Path().isEmpty()) return true;   // the current one
    return FileService()->exists(&directory) || FileService()->mkdir(&directory, true);
}

ErrorT ConfRegIniFileC::save()
{
    struct stat info;
    if (::stat(m_pathBytes.c_str(), &info) == 0) m_lock.shareAs(info.st_mode);
    const bool isLockedHere = !m_lock.isLocked();
    ErrorT result = TVXERR_REGISTRY_FAILURE;
    m_hasFailedToSave = true;   // until the new file is in place
    if (makeDirectory() && (!isLockedHere || m_lock.lockFile(LOCK_TRIES) == UnxFilckerC::LOCKED)) {
        result = saveLocked();
        const ErrnoKeeperC keeper;
        if (isLockedHere) m_lock.releaseFile();
    }
    return result;
}

// The file is merged with as it is now. An editor, which takes no lock, may be writing it meanwhile: then once more.
ErrorT ConfRegIniFileC::saveLocked()
{
    for (unsigned round = 0; round < MERGE_ROUNDS; ++round) {
        struct stat old;
        std::string text;
        const int failure = readWholeFile(m_pathBytes.c_str(), text, &old);
        errno = failure;
        if (failure != 0 && failure != ENOENT) return TVXERR_REGISTRY_FAILURE;
        const struct stat* const read = failure == 0 ? &old : nullptr;
        struct stat written = {};
        text = PrefsMergeC::merge(m_confData, text);
        errno = writeTemporary(text, read, written);
        if (errno != 0) return TVXERR_REGISTRY_FAILURE;
        if (isUntouchedSince(read)) return replaceBy(std::move(text), written);
        ::unlink(m_temporary.c_str());
    }
    errno = EBUSY;
    return TVXERR_REGISTRY_FAILURE;
}

// `read` is what was read; null when there was no file.
bool ConfRegIniFileC::isUntouchedSince(const struct stat* read) const
{
    struct stat info;
    if (::stat(m_pathBytes.c_str(), &info) != 0) return errno == ENOENT && read == nullptr;
    return read != nullptr && info.st_mtim.tv_sec == read->st_mtim.tv_sec && stampOf(info) == stampOf(*read);
}

// Puts the temporary file in place. What has been written is what is held from then on.
ErrorT ConfRegIniFileC::replaceBy(std::string&& text, const struct stat& written)
{
    if (std::rename(m_temporary.c_str(), m_pathBytes.c_str()) != 0) {
        const ErrnoKeeperC keeper;
        ::unlink(m_temporary.c_str());
        return ErrorOfErrno(keeper.error());
    }
    m_hasFailedToSave = false;
    take(std::move(text), written);
    m_lastCheck = ::time(nullptr);
    syncDirectoryOf(m_pathBytes.c_str());
    return 0;
}

// A file of that name is what a killed process has left, or somebody planted: it is removed, never written to.
// `written` becomes what the system knows about the new one, and will know when it has its final name.
int ConfRegIniFileC::writeTemporary(const std::string& text, const struct stat* like, struct stat& written) const
{
    const char* const path = m_temporary.c_str();
    if (::unlink(path) != 0 && errno != ENOENT) return errno;
    const int failure = writeNewFile(path, text, like);
    if (failure != 0 || ::stat(path, &written) == 0) return failure;
    const int reason = errno;
    ::unlink(path);
    return reason;
}
