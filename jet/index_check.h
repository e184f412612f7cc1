#pragma once

#include "jet/index_tree.h"

#include <span>
#include <string>

namespace kelb::jet {

/// What checkIndexTree() meets on its way through a tree.
class IndexVisitor {
public:
    virtual ~IndexVisitor() = default;
    /// A page that the tree leads to. False: it is somebody else's, or of this tree already, and is passed over.
    virtual bool enter(PageNumber page) = 0;
    /// Every entry of a readable leaf, in order.
    virtual void entry(std::span<const std::byte> key, RowId row, PageNumber leaf) = 0;
    virtual void error(PageNumber page, const std::string& text) = 0;
    virtual void warning(PageNumber page, const std::string& text) = 0;
};

/// Walks one tree as it hangs together and reports whatever a sound tree cannot have: pages, order, node keys, leaf
/// chain, owned map. Linear; remembers the page numbers of the tree. Throws nothing for damage.
void checkIndexTree(Pager& pager, const IndexTree::Place& place, IndexVisitor& visitor);

} // namespace kelb::jet
