#include "keytree.h"

#include <algorithm>

namespace {

// Takes the first part off a path that is not empty. False when that was the last one.
bool nextPart(std::string_view& path, std::string_view& part)
{
    const size_t end = path.find('\\');
    part = path.substr(0, end);
    path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
    return end != std::string_view::npos;
}

}   // namespace

int KeyTreeC::load(const MountsC& mounts, const std::string& key)
{
    std::string section;
    for (const MountT& mount : mounts.all()) {
        if (!key.empty() && !isAtOrAbove(key, mount.base) && !isBelow(key, mount.base, section)) continue;
        const int status = loadFile(mount.file, m_files.emplace_back());
        if (status != STATUS_DONE) return status;
        addFile(mounts, mount, m_files.back());
    }
    return STATUS_DONE;
}

// What another file holds is not reached in this one.
void KeyTreeC::addFile(const MountsC& mounts, const MountT& mount, const PrefsC& contents)
{
    const size_t base = enter(TOP, mount.base);
    std::string rest;
    for (const PrefsSectionElem* section = contents.sections(); section != nullptr; section = section->ps_next_p) {
        const std::string name = section->ps_name_p;
        if (mounts.holderOf(mount.base + "\\" + name, rest) == &mount) m_nodes[enter(base, name)].section = section;
    }
}

long KeyTreeC::childOf(size_t parent, std::string_view name) const
{
    return m_numbers.get(std::to_string(parent), name);
}

size_t KeyTreeC::enter(size_t at, std::string_view path)
{
    std::string_view part;
    for (bool hasMore = true; hasMore;) {
        hasMore = nextPart(path, part);
        const long known = childOf(at, part);
        if (known != NameNumbersC::NONE) {
            at = static_cast<size_t>(known);
            continue;
        }
        const size_t added = m_nodes.size();
        m_numbers.set(std::to_string(at), part, static_cast<long>(added));
        m_nodes[at].children.push_back(added);
        m_nodes.push_back({std::string(part), at, m_nodes[at].depth + 1, {}, nullptr});
        at = added;
    }
    return at;
}

size_t KeyTreeC::find(const std::string& key) const
{
    std::string_view path = key;
    std::string_view part;
    size_t at = TOP;
    for (bool hasMore = true; hasMore;) {
        hasMore = nextPart(path, part);
        const long child = childOf(at, part);
        if (child == NameNumbersC::NONE) return part.empty() && !hasMore ? at : TOP;   // a backslash at the end
        at = static_cast<size_t>(child);
    }
    return at;
}

std::vector<size_t> KeyTreeC::under(size_t top) const
{
    std::vector<size_t> found;
    std::vector<size_t> open = {top};
    while (!open.empty()) {
        const size_t at = open.back();
        open.pop_back();
        found.push_back(at);
        open.insert(open.end(), m_nodes[at].children.rbegin(), m_nodes[at].children.rend());
    }
    return found;
}

std::string KeyTreeC::keyOfNode(size_t number) const
{
    std::vector<const std::string*> names;
    for (; number != TOP; number = m_nodes[number].parent) names.push_back(&m_nodes[number].name);
    std::string key;
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        if (name != names.rbegin()) key += '\\';
        key += **name;
    }
    return key;
}

std::vector<const PrefsKeyElem*> KeyTreeC::valuesOf(size_t number) const
{
    std::vector<const PrefsKeyElem*> values;
    if (m_nodes[number].section == nullptr) return values;
    PrefsSectionC& keys = *m_nodes[number].section->ps_sec_p;
    keys.ResetIterator();
    while (const PrefsKeyElem* const key = keys()) values.push_back(key);
    return values;
}
