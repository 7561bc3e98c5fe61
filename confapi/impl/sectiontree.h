// sectiontree.h: the keys that the names of a file's sections stand for, those above them included.
//
// A name is taken apart at each backslash; every part on the way down is a node, so that building the tree and
// finding a key in it take time in proportion to the names, however many backslashes somebody has put into them.
//
// Thread safety: unlocked.
#ifndef TVXCMN_CONFAPI_SECTIONTREE_H
#define TVXCMN_CONFAPI_SECTIONTREE_H

#include "cmnlib/prefstext.h"
#include "stringc.h"

#include <string_view>
#include <unordered_map>
#include <vector>

class PrefsC;

class SectionTreeC {
public:
    // Takes the names of all sections that are not removed, which it points into from now on.
    void build(const PrefsC& prefs);
    void clear();
    bool isBuilt() const { return m_isBuilt; }

    // Follows a change of the sections; a tree that is not built yet has nothing to follow. `isBack`: the section was
    // removed, and is there again at its old place.
    void add(std::string_view name, bool isBack);
    void remove(std::string_view name);

    // Whether a section lies below the key of that name.
    bool isAncestor(std::string_view name) const;

    // False when names may be out of order, or gone, because of removed sections: then it is to be built again.
    bool isInOrder() const { return m_isInOrder; }
    // The names right below the key, in the order of the file, each once; null when there is no such key.
    const std::vector<StringC>* childrenOf(std::string_view name) const;

private:
    struct NodeT {
        std::vector<StringC> children;
        unsigned below = 0;   // sections
    };
    struct EdgeT {
        unsigned parent;
        std::string_view name;

        bool operator==(const EdgeT& other) const
        {
            return parent == other.parent && prefstext::areEqual(name, other.name);
        }
    };
    struct EdgeHashT {
        size_t operator()(const EdgeT& edge) const { return prefstext::hash(edge.name) ^ edge.parent * 0x9E3779B9UL; }
    };

    void count(std::string_view name, unsigned change);
    const NodeT* find(std::string_view name) const;
    unsigned childNode(unsigned parent, std::string_view name);

    std::vector<NodeT> m_nodes;   // the first one is the root
    std::unordered_map<EdgeT, unsigned, EdgeHashT> m_edges;
    bool m_isBuilt = false;
    bool m_isInOrder = false;
};

#endif   // TVXCMN_CONFAPI_SECTIONTREE_H
