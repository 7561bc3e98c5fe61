// keytree.h: the keys of all mounted files that a program would see, as a tree.
#ifndef TVXREG_KEYTREE_H
#define TVXREG_KEYTREE_H

#include "mounts.h"
#include "names.h"

#include <deque>
#include <string>
#include <string_view>
#include <vector>

class KeyTreeC {
public:
    struct NodeT {
        std::string name;   // the last part of the key's path
        size_t parent;
        size_t depth;   // roots: 1
        std::vector<size_t> children;
        const PrefsSectionElem* section;   // null: the key is there because of others below it
    };
    static constexpr size_t TOP = 0;   // stands above the roots

    KeyTreeC() : m_nodes{{"", TOP, 0, {}, nullptr}} {}

    // Loads the files that hold what lies at, above and below `key`, which is empty for everything.
    int load(const MountsC& mounts, const std::string& key);

    // The node of a key, or TOP when it is not there.
    size_t find(const std::string& key) const;
    // A node and all below it, each in front of what lies below it.
    std::vector<size_t> under(size_t top) const;

    const NodeT& node(size_t number) const { return m_nodes[number]; }
    std::string keyOfNode(size_t number) const;
    std::vector<const PrefsKeyElem*> valuesOf(size_t number) const;

private:
    void addFile(const MountsC& mounts, const MountT& mount, const PrefsC& contents);
    size_t enter(size_t at, std::string_view path);
    long childOf(size_t parent, std::string_view name) const;

    std::deque<PrefsC> m_files;
    std::vector<NodeT> m_nodes;
    NameNumbersC m_numbers;   // of the nodes, by parent and name
};

#endif   // TVXREG_KEYTREE_H
