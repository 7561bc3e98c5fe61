#include "error/api/catalog.h"

#include "catalogformat.h"
#include "cmnlib/syscall.h"
#include "error/api/messagetext.h"
#include "localei.h"
#include "tvxcmn.h"

#include <bit>
#include <cstring>
#include <iterator>
#include <sys/stat.h>

namespace {

const char LANGUAGE_MARK[] = "%L";
const size_t MAX_IN_MEMORY = size_t{64} << 20;   // of the file, and of the table over it
const size_t MAX_PROBES = 128;                   // random numbers need some 80 in the fullest of tables

unsigned long keyOf(ErrorT err) { return ErrCatalogKey(ErrorSetOf(err), ErrorMessageOf(err)); }

bool isSeparator(char ch) { return ch == '/' || ch == '\\'; }

// Reads up to `size` bytes; fewer at the end of the file, and when it cannot be read.
size_t readAt(int fd, char* to, size_t size, unsigned long offset)
{
    size_t done = 0;
    while (done < size) {
        const ssize_t count =
            retryOnEintr([=] { return ::pread(fd, to + done, size - done, static_cast<off_t>(offset + done)); });
        if (count <= 0) break;
        done += static_cast<size_t>(count);
    }
    return done;
}

}   // namespace

ErrCatalogC::ErrCatalogC(const StringC& path) : catpath(path)
{
    const std::string name = catpath.utf8();
    const size_t mark = name.find(LANGUAGE_MARK);
    if (mark != std::string::npos) {
        catd = openFirst(name.substr(0, mark), name.substr(mark + std::size(LANGUAGE_MARK) - 1));
    } else if (!name.empty()) {
        catd = opencat(name.c_str());
    }
    if (isOpen()) readFile();
}

ErrCatalogC::~ErrCatalogC()
{
    if (isOpen()) closeFd(catd);
}

// What is no file must not make anybody wait: opening a pipe would.
int ErrCatalogC::opencat(const char* path) { return openFd(path, O_RDONLY | O_NONBLOCK); }

// The catalog of the user's language, or the one for all languages, whose name has nothing in place of the mark and
// of what set it off.
int ErrCatalogC::openFirst(std::string before, const std::string& behind)
{
    LocaleIdT name;
    LocaleRegionI& region = *getLocale(name)->region(1);
    const std::string lang3 = region.lang3().asLower().utf8();
    const std::string lang2 = region.lang2().asLower().utf8();
    const std::string country = region.country().asLower().utf8();
    const std::string withCountry = '-' + country;
    for (const std::string_view suffix : {std::string_view(withCountry), std::string_view()}) {
        for (const std::string& language : {lang3, lang2}) {
            std::string path = before;
            const int fd = opencat(path.append(language).append(suffix).append(behind).c_str());
            if (fd >= 0) return fd;
        }
    }
    if (before.size() > 1 && before.back() == '.') before.pop_back();
    if (before.size() > 1 && isSeparator(before.back()) && before.back() == behind[0]) before.pop_back();
    if (before.empty() && isSeparator(behind[0])) before.push_back('.');
    return opencat((before + behind).c_str());
}

void ErrCatalogC::readFile()
{
    char header[ERR_CATALOG_HEADER_SIZE];
    unsigned count = 0;
    if (readAt(catd, header, sizeof header, 0) != sizeof header || !ReadErrCatalogHeader(header, count)) {
        closeFd(catd);
        catd = -1;
        return;
    }
    nummsg = count;
    struct stat info;
    if (::fstat(catd, &info) != 0 || static_cast<size_t>(info.st_size) > MAX_IN_MEMORY) return;
    m_content.reset(new char[static_cast<size_t>(info.st_size)]);
    m_size = readAt(catd, m_content.get(), static_cast<size_t>(info.st_size), 0);
    makeSlots();
}

// Where the index is whole and each number greater than the one before it, every way to search it finds the same.
void ErrCatalogC::makeSlots()
{
    const unsigned long count = static_cast<unsigned long>(nummsg);
    if (count == 0 || ErrCatalogEntryOffset(count) > m_size) return;
    m_slotBits = static_cast<unsigned>(std::bit_width(count + count / 2));
    if (sizeof(SlotT) << m_slotBits > MAX_IN_MEMORY) return;
    m_slots.reset(new SlotT[size_t{1} << m_slotBits]);
    unsigned long before = 0;
    for (unsigned long index = 0; index < count; ++index) {
        const ErrCatalogEntryT entry = ReadErrCatalogEntry(m_content.get() + ErrCatalogEntryOffset(index));
        const unsigned long key = ErrCatalogKey(entry.set, entry.message);
        SlotT* const slot = index == 0 || key > before ? slotOf(key) : nullptr;
        if (slot == nullptr) {
            m_slots.reset();
            return;
        }
        slot->key = before = key;
    }
}

// The slot of a number, or the free one that would be its; null if that is too far away.
ErrCatalogC::SlotT* ErrCatalogC::slotOf(unsigned long key) const
{
    const unsigned long golden = 0x9E3779B97F4A7C15;
    const size_t last = (size_t{1} << m_slotBits) - 1;
    const size_t home = key * golden >> (64 - m_slotBits);
    for (size_t probe = 0; probe < MAX_PROBES; ++probe) {
        SlotT& slot = m_slots[(home + probe) & last];
        if (slot.key == key || slot.key == SlotT::FREE) return &slot;
    }
    return nullptr;
}

StringC ErrCatalogC::getMessage(ErrSevT& sev, ErrorT err, const char* def_str, const char*)
{
    StringC text;
    if (message(err, text, sev)) return text;
    return defaultMessage(def_str, sev);
}

// Of several threads that make the same message one keeps it.
bool ErrCatalogC::message(ErrorT err, StringC& text, ErrSevT& sev) const
{
    MessageT made;
    const MessageT* known = nullptr;
    if (m_slots != nullptr) {
        if (!ErrorHasCatalogText(err)) return false;
        const unsigned long key = keyOf(err);
        SlotT* const slot = slotOf(key);
        if (slot == nullptr || slot->key != key) return false;
        known = slot->message.load(std::memory_order_acquire);
        if (known == nullptr && makeMessage(err, made)) {
            auto kept = std::make_unique<const MessageT>(made);
            if (slot->message.compare_exchange_strong(known, kept.get())) known = kept.release();
        }
    } else if (makeMessage(err, made)) {
        known = &made;
    }
    if (known == nullptr) return false;
    text = known->text;
    sev = known->sev;
    return true;
}

bool ErrCatalogC::makeMessage(ErrorT err, MessageT& made) const
{
    std::string_view text;
    std::string buffer;
    if (!lookup(err, text, buffer)) return false;
    made.text = checkTypes(catalogMessage(text, made.sev));
    return true;
}

// Assigning to a handle is one atomic step among others that assign, and nobody reads it.
void ErrCatalogC::setUserLevel(StringC p_userLevel) { userLevel = static_cast<const StringC&>(p_userLevel); }

// `size` bytes of the file, in memory or read into `buffer`; null if it does not hold them. None are anywhere.
const char* ErrCatalogC::bytesAt(unsigned long offset, size_t size, char* buffer) const
{
    if (size == 0) return buffer;
    if (m_content != nullptr) return offset + size <= m_size ? m_content.get() + offset : nullptr;
    return readAt(catd, buffer, size, offset) == size ? buffer : nullptr;
}

bool ErrCatalogC::search(unsigned long key, ErrCatalogEntryT& found) const
{
    long low = 0;
    long high = nummsg - 1;
    while (low <= high) {
        const long middle = low + (high - low) / 2;
        char buffer[ERR_CATALOG_ENTRY_SIZE];
        const char* const bytes =
            bytesAt(ErrCatalogEntryOffset(static_cast<unsigned long>(middle)), sizeof buffer, buffer);
        if (bytes == nullptr) return false;
        found = ReadErrCatalogEntry(bytes);
        const unsigned long there = ErrCatalogKey(found.set, found.message);
        if (there == key) return true;
        low = there < key ? middle + 1 : low;
        high = there < key ? high : middle - 1;
    }
    return false;
}

bool ErrCatalogC::lookup(ErrorT err, std::string_view& text, std::string& buffer) const
{
    ErrCatalogEntryT entry;
    if (!isOpen() || !ErrorHasCatalogText(err)) return false;
    if (!search(keyOf(err), entry)) return false;
    if (m_content == nullptr) buffer.resize(entry.length);
    const char* const bytes = bytesAt(entry.offset, entry.length, buffer.data());
    if (bytes == nullptr) return false;
    text = {bytes, strnlen(bytes, entry.length)};
    return true;
}
