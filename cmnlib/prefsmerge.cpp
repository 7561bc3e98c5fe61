#include "cmnlib/prefsmerge.h"

#include "assertfatal.h"
#include "cmnlib/prefsstore.h"

#include <algorithm>

namespace {

const std::string_view BLANKS = " \t";

bool isComment(std::string_view bare) { return bare.substr(0, 1) == ";"; }

std::string_view withoutBlanksInFront(std::string_view line)
{
    return line.substr(std::min(line.find_first_not_of(BLANKS), line.size()));
}

// Where a section begins: what stands in its brackets. False when the line is none.
bool readHeader(std::string_view bare, std::string_view& header)
{
    if (bare.substr(0, 1) != "[") return false;
    const size_t close = bare.find(']');
    if (close == std::string_view::npos) return false;
    header = prefstext::upToNul(bare.substr(1, close - 1));
    return true;
}

// The name of the key in a line that has one; empty for every other line.
std::string_view keyNameOf(std::string_view line)
{
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos) return {};
    return prefstext::trimmed(prefstext::upToNul(line.substr(0, equals)));
}

// As a text writer does it: every line break becomes "\n".
void appendText(std::string& out, const char* text)
{
    for (const char* back; (back = std::strchr(text, '\r')) != nullptr;) {
        out.append(text, back).push_back('\n');
        text = back + (back[1] == '\n' ? 2 : 1);
    }
    out.append(text);
}

void appendKey(std::string& out, const PrefsKeyElem& key)
{
    if (*key.ke_name_p != '\0') {
        appendText(out, key.ke_name_p);
        out.push_back('=');
    }
    appendText(out, key.ke_value_p);
    out.push_back('\n');
}

void appendHeader(std::string& out, const PrefsSectionElem& section)
{
    out.append("\n[");
    appendText(out, section.ps_name_p);
    out.append("]\n\n");
}

}   // namespace

std::string PrefsMergeC::merge(PrefsC& prefs, std::string_view source)
{
    prefs.Unvisit();
    std::string text = PrefsMergeC(prefs, source).run();
    prefs.Unvisit();
    return text;
}

std::string PrefsMergeC::whole(const PrefsC& prefs)
{
    std::string out;
    for (const PrefsSectionElem* section = prefs.sectlist_p; section != nullptr; section = section->ps_next_p) {
        if (section->ps_dirty == SEC_REMOVE || section->ps_name_p == nullptr) continue;
        appendHeader(out, *section);
        for (const PrefsKeyElem* key = firstKey(*section); key != nullptr; key = key->ke_next_p) {
            if (key->ke_dirty != KEY_REMOVE) appendKey(out, *key);
        }
    }
    return out;
}

std::string PrefsMergeC::run()
{
    m_out.reserve(m_source.size() + m_source.size() / 8 + 256);
    if (m_source.starts_with(prefstext::UTF8_MARK)) {
        m_out.append(prefstext::UTF8_MARK);
        m_source.remove_prefix(prefstext::UTF8_MARK.size());
    }
    findLaterBlocks();
    prefstext::LinesC lines(m_source);
    for (std::string_view line; lines.next(line);) mergeLine(line);
    finishSection();
    appendUnvisitedSections();
    return std::move(m_out);
}

// ---- what the file and the memory have in common ------------------------------------------------------

PrefsKeyElem* PrefsMergeC::firstKey(const PrefsSectionElem& section)
{
    return TVX_CHECK(section.ps_sec_p != nullptr, "sec_elem_p->ps_sec_p != 0") ? section.ps_sec_p->keylist_p : nullptr;
}

PrefsSectionElem* PrefsMergeC::findSection(std::string_view header) const
{
    return findName(m_prefs.m_index, header, prefstext::hash(header), [] {});
}

PrefsKeyElem* PrefsMergeC::findKey(std::string_view name) const
{
    if (!TVX_CHECK(m_section->ps_sec_p != nullptr, "sec_elem_p->ps_sec_p != 0")) return nullptr;
    return findName(m_section->ps_sec_p->m_index, name, prefstext::hash(name), [] {});
}

// Marks sections as visited, which is taken back.
void PrefsMergeC::findLaterBlocks()
{
    BlockT block = {nullptr, {}};
    prefstext::LinesC lines(m_source);
    std::string_view line;
    std::string_view header;
    const auto endBlock = [&](const char* end) {
        if (block.section == nullptr) return;
        block.lines = {block.lines.data(), static_cast<size_t>(end - block.lines.data())};
        m_laterBlocks.push_back(block);
    };
    while (lines.next(line)) {
        if (!readHeader(withoutBlanksInFront(line), header)) continue;
        endBlock(line.data());
        PrefsSectionElem* const section = findSection(header);
        const bool isRepeated = section != nullptr && section->ps_visited;
        block = {isRepeated ? section : nullptr, lines.rest()};
        if (section != nullptr) section->ps_visited = true;
    }
    endBlock(m_source.data() + m_source.size());
    std::stable_sort(m_laterBlocks.begin(), m_laterBlocks.end(), isInFront);
    for (PrefsSectionElem* each = m_prefs.sectlist_p; each != nullptr; each = each->ps_next_p) each->ps_visited = false;
}

// ---- lines --------------------------------------------------------------------------------------------

// Bytes that are no mark where they stand must not become one at the front.
void PrefsMergeC::copyLine(std::string_view line)
{
    if (m_out.empty() && prefstext::hasMark(line)) m_out.push_back('\n');
    m_out.append(line).push_back('\n');
}

void PrefsMergeC::mergeLine(std::string_view line)
{
    const std::string_view bare = withoutBlanksInFront(line);
    std::string_view header;
    if (isComment(bare)) {
        copyLine(line);
        m_isBlankAllowed = true;
    } else if (readHeader(bare, header)) {
        mergeHeader(line, header);
    } else if (bare.substr(0, 1) == "[") {
        return;   // no header, and nothing else either
    } else if (line.empty()) {
        if (m_isBlankAllowed) copyLine(line);
        m_isBlankAllowed = false;
    } else {
        mergeContent(line);
    }
}

void PrefsMergeC::mergeHeader(std::string_view line, std::string_view header)
{
    finishSection();
    m_section = findSection(header);
    m_isRepeated = m_section != nullptr && m_section->ps_visited;
    const bool isRemoved = m_section != nullptr && m_section->ps_dirty == SEC_REMOVE;
    if (!isRemoved && !m_isRepeated) copyLine(line);
    m_isBlankAllowed = true;
}

void PrefsMergeC::mergeContent(std::string_view line)
{
    const SectionStatusE state = m_section != nullptr ? m_section->ps_dirty : SEC_NEW;
    if (state == SEC_REMOVE) return;
    if (!TVX_CHECK(state == SEC_NEW || state == SEC_CLEAN,
                   "!\"Invalid section state encounted when merging pref file.\"")) {
        copyLine(line);
        m_isBlankAllowed = true;
        return;
    }
    const std::string_view name = m_section != nullptr ? keyNameOf(line) : std::string_view();
    if (name.empty()) return mergeOtherLine(line);
    if (!m_isRepeated) mergeKeyLine(line, name);   // else it stands at the end of the first block
}

// A line of only blanks counts as an empty one.
void PrefsMergeC::mergeOtherLine(std::string_view line)
{
    const bool hasText = !withoutBlanksInFront(line).empty();
    if (!m_isBlankAllowed && !hasText) return;
    copyLine(line);
    m_isBlankAllowed = hasText;
}

// In a section that is new in memory and yet in the file, because somebody else made it too, only what is set here
// takes the place of what is there.
void PrefsMergeC::mergeKeyLine(std::string_view line, std::string_view name)
{
    PrefsKeyElem* key = findKey(name);
    if (key != nullptr && m_section->ps_dirty == SEC_NEW && key->ke_dirty != KEY_CHANGE) key = nullptr;
    if (key != nullptr && key->ke_visited) return;
    const KeyStatusE state = key != nullptr ? key->ke_dirty : KEY_CLEAN;
    if (key != nullptr) key->ke_visited = true;
    if (state == KEY_REMOVE) return;
    if (state == KEY_CHANGE) {
        appendKey(m_out, *key);
    } else {
        (void)TVX_CHECK(state == KEY_CLEAN, "!\"Invalid key state encounted when merging pref file.\"");
        copyLine(line);
    }
    m_isBlankAllowed = true;
}

// ---- sections -----------------------------------------------------------------------------------------

// Keys that stand under a later header of the same section move up, for that header is dropped; then come those that
// are new.
void PrefsMergeC::finishSection()
{
    if (m_section == nullptr || m_section->ps_visited) return;
    m_section->ps_visited = true;
    const bool isRemoved = m_section->ps_dirty == SEC_REMOVE;
    auto block = std::lower_bound(m_laterBlocks.begin(), m_laterBlocks.end(), BlockT{m_section, {}}, isInFront);
    for (; !isRemoved && block != m_laterBlocks.end() && block->section == m_section; ++block) {
        prefstext::LinesC lines(block->lines);
        for (std::string_view line; lines.next(line);) {
            const std::string_view bare = withoutBlanksInFront(line);
            const std::string_view name = isComment(bare) || bare.substr(0, 1) == "[" ? "" : keyNameOf(line);
            if (!name.empty()) mergeKeyLine(line, name);
        }
    }
    for (PrefsKeyElem* key = firstKey(*m_section); key != nullptr; key = key->ke_next_p) {
        if (!isRemoved && !key->ke_visited && key->ke_dirty == KEY_CHANGE) appendKey(m_out, *key);
        key->ke_visited = true;
    }
}

// What was loaded and is in the file no longer has been removed there by somebody else: only changes are written.
void PrefsMergeC::appendUnvisitedSections()
{
    for (PrefsSectionElem* section = m_prefs.sectlist_p; section != nullptr; section = section->ps_next_p) {
        if (section->ps_visited) continue;
        section->ps_visited = true;
        if (section->ps_dirty == SEC_REMOVE || section->ps_name_p == nullptr) continue;
        const bool isNew = section->ps_dirty == SEC_NEW;
        bool hasHeader = isNew;
        if (isNew) appendHeader(m_out, *section);
        for (const PrefsKeyElem* key = firstKey(*section); key != nullptr; key = key->ke_next_p) {
            if (isNew ? key->ke_dirty == KEY_REMOVE : key->ke_dirty != KEY_CHANGE) continue;
            if (!hasHeader) appendHeader(m_out, *section);
            hasHeader = true;
            appendKey(m_out, *key);
        }
    }
}
