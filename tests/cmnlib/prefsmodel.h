// prefsmodel.h: what preference files mean, in the slowest and plainest form: an oracle for tests and fuzzing.
#ifndef TVXCMN_TESTS_PREFSMODEL_H
#define TVXCMN_TESTS_PREFSMODEL_H

#include "cmnlib/prefstext.h"
#include "prefs.h"

#include <string>
#include <utility>
#include <vector>

class PrefsModelC {
public:
    struct KeyT {
        std::string name;
        std::string value;
        KeyStatusE state;
        bool visited;
    };
    struct SectionT {
        std::string name;
        SectionStatusE state;
        bool visited;
        std::vector<KeyT> keys;
    };

    bool load(const std::string& text, bool strict, bool continuation)
    {
        m_sections.clear();
        std::string current;
        std::string joined;
        bool isPending = false;
        for (const std::string& raw : linesOf(text.substr(text.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0))) {
            joined = isPending ? joined + trim(raw) : trim(raw);
            isPending = false;
            if (joined.empty()) continue;
            size_t backslashes = 0;
            while (backslashes < joined.size() && joined[joined.size() - 1 - backslashes] == '\\') ++backslashes;
            if (continuation && backslashes % 2 == 1) {
                joined.pop_back();
                isPending = true;
                continue;
            }
            if (loadLine(joined, current) || !strict) continue;
            m_sections.clear();
            return false;
        }
        return true;
    }

    void set(const std::string& section, const std::string& key, const std::string& value, bool dirty)
    {
        SectionT* found = find(section);
        if (found == nullptr || found->state == SEC_REMOVE) found = &make(section, SEC_NEW);
        KeyT* elem = key.empty() ? nullptr : find(*found, key);
        if (elem == nullptr) elem = &found->keys.emplace_back(KeyT{key, "", KEY_CLEAN, false});
        size_t begin = 0;
        while (begin < value.size() && (value[begin] == ' ' || value[begin] == '\t')) ++begin;
        elem->value =
            std::string(prefstext::trimmedRight(value)).substr(std::min(begin, prefstext::trimmedRight(value).size()));
        elem->state = dirty ? KEY_CHANGE : KEY_CLEAN;
    }
    void add(const std::string& section)
    {
        const SectionT* const found = find(section);
        if (found == nullptr || found->state == SEC_REMOVE) make(section, SEC_NEW);
    }
    void removeKey(const std::string& section, const std::string& key)
    {
        SectionT* const found = find(section);
        KeyT* const elem = found != nullptr ? find(*found, key) : nullptr;
        if (elem != nullptr) elem->state = KEY_REMOVE;
    }
    void removeSection(const std::string& section)
    {
        SectionT* const found = find(section);
        if (found == nullptr) return;
        found->state = SEC_REMOVE;
        for (KeyT& key : found->keys) key.state = KEY_REMOVE;
    }

    std::string merge(const std::string& source)
    {
        for (SectionT& section : m_sections) {
            section.visited = false;
            for (KeyT& key : section.keys) key.visited = false;
        }
        const bool hasMark = source.substr(0, 3) == "\xEF\xBB\xBF";
        m_out = hasMark ? "\xEF\xBB\xBF" : "";
        m_blank = true;
        m_current = nullptr;
        for (const std::string& line : gathered(linesOf(source.substr(hasMark ? 3 : 0)))) mergeLine(line);
        finish();
        appendUnvisited();
        return m_out;
    }

    // What is live: sections, and in each of them keys with their values.
    std::vector<SectionT> live() const
    {
        std::vector<SectionT> result;
        for (SectionT section : m_sections) {
            if (section.state == SEC_REMOVE) continue;
            std::erase_if(section.keys, [](const KeyT& key) { return key.state == KEY_REMOVE; });
            result.push_back(section);
        }
        return result;
    }

private:
    static std::string trim(const std::string& text) { return std::string(prefstext::trimmed(text)); }
    static std::string cut(const std::string& text) { return text.c_str(); }
    static bool same(const std::string& a, const std::string& b) { return prefstext::areEqual(a, b); }

    static std::vector<std::string> linesOf(const std::string& text)
    {
        std::vector<std::string> lines;
        std::string line;
        for (size_t i = 0; i < text.size(); ++i) {
            if (text[i] != '\r' && text[i] != '\n') {
                line += text[i];
                if (i + 1 == text.size()) lines.push_back(line);
                continue;
            }
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
            lines.push_back(line);
            line.clear();
        }
        return lines;
    }

    static std::string bare(const std::string& line)
    {
        const size_t at = line.find_first_not_of(" \t");
        return at == std::string::npos ? "" : line.substr(at);
    }
    static bool isHeader(const std::string& line, std::string* name)
    {
        const std::string text = bare(line);
        const size_t close = text.find(']');
        if (text.substr(0, 1) != "[" || close == std::string::npos) return false;
        *name = cut(text.substr(1, close - 1));
        return true;
    }
    static std::string keyOf(const std::string& line)
    {
        if (bare(line).substr(0, 1) == ";" || bare(line).substr(0, 1) == "[") return "";
        const size_t equals = line.find('=');
        return equals == std::string::npos ? "" : trim(cut(line.substr(0, equals)));
    }

    SectionT* find(const std::string& name)
    {
        for (SectionT& section : m_sections)
            if (same(section.name, name)) return &section;
        return nullptr;
    }
    static KeyT* find(SectionT& section, const std::string& name)
    {
        for (KeyT& key : section.keys)
            if (!name.empty() && same(key.name, name)) return &key;
        return nullptr;
    }
    SectionT& make(const std::string& name, SectionStatusE state)
    {
        SectionT* const found = find(name);
        if (found == nullptr) return m_sections.emplace_back(SectionT{name, state, false, {}});
        found->state = SEC_CLEAN;
        return *found;
    }

    bool loadLine(const std::string& line, std::string& current)
    {
        if (line[0] == ';') return true;
        if (line[0] == '[') {
            const size_t close = line.find(']');
            const std::string name = close == std::string::npos ? "" : trim(cut(line.substr(1, close - 1)));
            if (name.empty()) return false;
            current = name;
            if (find(name) == nullptr) make(name, SEC_CLEAN);
            return true;
        }
        const size_t equals = line.find('=');
        if (equals == std::string::npos || equals == 0 || current.empty()) return false;
        const std::string key = trim(cut(line.substr(0, equals)));
        if (key.empty()) return false;
        set(current, key, cut(trim(line.substr(equals + 1))), false);
        return true;
    }

    // The lines with the keys of repeated sections moved to the end of the section's first block.
    std::vector<std::string> gathered(const std::vector<std::string>& lines)
    {
        std::vector<std::vector<std::string>> blocks(1);
        std::vector<std::pair<SectionT*, size_t>> first;   // and the number of its block
        SectionT* moving = nullptr;
        size_t target = 0;
        std::string name;
        for (const std::string& line : lines) {
            if (isHeader(line, &name)) {
                blocks.push_back({line});
                SectionT* const section = find(name);
                moving = nullptr;
                if (section == nullptr) continue;
                for (const auto& [known, block] : first) {
                    if (known != section) continue;
                    moving = section->state == SEC_REMOVE ? nullptr : section;
                    target = block;
                }
                if (moving == nullptr) first.emplace_back(section, blocks.size() - 1);
                continue;
            }
            if (moving != nullptr && !keyOf(line).empty()) {
                blocks[target].push_back(line);
            } else {
                blocks.back().push_back(line);
            }
        }
        std::vector<std::string> result;
        for (const auto& block : blocks) result.insert(result.end(), block.begin(), block.end());
        return result;
    }

    void write(const KeyT& key) { m_out += (key.name.empty() ? "" : key.name + "=") + key.value + "\n"; }
    void copy(const std::string& line, bool blankAfterwards)
    {
        for (const char* mark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"}) {
            if (m_out.empty() && line.starts_with(mark)) m_out = "\n";
        }
        m_out += line + "\n";
        m_blank = blankAfterwards;
    }

    void finish()
    {
        if (m_current == nullptr || m_current->visited) return;
        for (KeyT& key : m_current->keys) {
            if (!key.visited && key.state == KEY_CHANGE) write(key);
            key.visited = true;
        }
        m_current->visited = true;
    }

    void mergeLine(const std::string& line)
    {
        std::string name;
        if (bare(line).substr(0, 1) == ";") return copy(line, true);
        if (isHeader(line, &name)) {
            finish();
            m_current = find(name);
            m_blank = true;
            const bool isDropped = m_current != nullptr && (m_current->state == SEC_REMOVE || m_current->visited);
            if (!isDropped) copy(line, true);
            return;
        }
        if (bare(line).substr(0, 1) == "[") return;
        if (line.empty()) {
            if (m_blank) copy(line, false);
            return;
        }
        if (m_current != nullptr && m_current->state == SEC_REMOVE) return;
        KeyT* const key = m_current != nullptr ? find(*m_current, keyOf(line)) : nullptr;
        const bool isOurs = key != nullptr && (m_current->state == SEC_CLEAN || key->state == KEY_CHANGE);
        if (!isOurs) {
            if (m_blank || !bare(line).empty()) copy(line, !bare(line).empty());
            return;
        }
        if (std::exchange(key->visited, true) || key->state == KEY_REMOVE) return;
        if (key->state == KEY_CLEAN) return copy(line, true);
        write(*key);
        m_blank = true;
    }

    void appendUnvisited()
    {
        for (const SectionT& section : m_sections) {
            if (section.visited || section.state == SEC_REMOVE) continue;
            std::string keys;
            std::swap(keys, m_out);
            for (const KeyT& key : section.keys)
                if (section.state == SEC_NEW ? key.state != KEY_REMOVE : key.state == KEY_CHANGE) write(key);
            std::swap(keys, m_out);
            if (section.state == SEC_NEW || !keys.empty()) m_out += "\n[" + section.name + "]\n\n" + keys;
        }
    }

    std::vector<SectionT> m_sections;
    std::string m_out;
    bool m_blank = true;
    SectionT* m_current = nullptr;
};

// What is live in an object, in the model's terms.
inline std::vector<PrefsModelC::SectionT> liveOf(const PrefsC& prefs)
{
    std::vector<PrefsModelC::SectionT> result;
    for (const char** name = prefs.GetSectNames(); *name != nullptr; ++name) {
        result.push_back({*name, SEC_CLEAN, false, {}});
        for (PrefsKeyElem** key = prefs.GetKeyElems(*name); *key != nullptr; ++key)
            result.back().keys.push_back({(*key)->ke_name_p, (*key)->ke_value_p, (*key)->ke_dirty, false});
    }
    return result;
}

// As text: "[name]" and "name=value" a line.
inline std::string textOf(const std::vector<PrefsModelC::SectionT>& sections)
{
    std::string text;
    for (const PrefsModelC::SectionT& section : sections) {
        text += "[" + section.name + "]\n";
        for (const PrefsModelC::KeyT& key : section.keys) text += key.name + "=" + key.value + "\n";
    }
    return text;
}

#endif   // TVXCMN_TESTS_PREFSMODEL_H
