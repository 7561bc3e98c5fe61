#include "confapi/impl/sectiontree.h"

#include "prefs.h"
#include "string/api/textrepair.h"

namespace {

// Takes the first part off `rest`, and the backslash behind it; `isLast` tells that there was none.
std::string_view takePart(std::string_view& rest, bool& isLast)
{
    const size_t size = rest.find('\\');
    isLast = size == std::string_view::npos;
    const std::string_view part = rest.substr(0, size);
    rest.remove_prefix(isLast ? rest.size() : size + 1);
    return part;
}

}   // namespace

void SectionTreeC::clear()
{
    m_nodes.clear();
    m_edges.clear();
    m_isBuilt = m_isInOrder = false;
}

void SectionTreeC::build(const PrefsC& prefs)
{
    clear();
    m_nodes.emplace_back();
    for (const PrefsSectionElem* section = prefs.sections(); section != nullptr; section = section->ps_next_p) {
        if (section->ps_dirty != SEC_REMOVE && section->ps_name_p != nullptr) count(section->ps_name_p, 1);
    }
    m_isBuilt = m_isInOrder = true;
}

void SectionTreeC::add(std::string_view name, bool isBack)
{
    if (!m_isBuilt) return;
    count(name, 1);
    if (isBack) m_isInOrder = false;
}

void SectionTreeC::remove(std::string_view name)
{
    if (!m_isBuilt) return;
    count(name, -1U);
    m_isInOrder = false;
}

void SectionTreeC::count(std::string_view name, unsigned change)
{
    unsigned node = 0;
    for (bool isLast = false; !isLast;) {
        const std::string_view part = takePart(name, isLast);
        node = childNode(node, part);
        if (!name.empty()) m_nodes[node].below += change;
    }
}

// A part without a name, between two backslashes, is not the name of a key.
unsigned SectionTreeC::childNode(unsigned parent, std::string_view name)
{
    const auto [edge, isNew] = m_edges.try_emplace({parent, name}, static_cast<unsigned>(m_nodes.size()));
    if (isNew) {
        if (!name.empty()) m_nodes[parent].children.push_back(repairedText(name));
        m_nodes.emplace_back();
    }
    return edge->second;
}

const SectionTreeC::NodeT* SectionTreeC::find(std::string_view name) const
{
    unsigned node = 0;
    for (bool isLast = false; !isLast;) {
        const auto edge = m_edges.find({node, takePart(name, isLast)});
        if (edge == m_edges.end()) return nullptr;
        node = edge->second;
    }
    return &m_nodes[node];
}

bool SectionTreeC::isAncestor(std::string_view name) const
{
    const NodeT* const node = find(name);
    return node != nullptr && node->below > 0;
}

const std::vector<StringC>* SectionTreeC::childrenOf(std::string_view name) const
{
    const NodeT* const node = find(name);
    return node != nullptr ? &node->children : nullptr;
}
