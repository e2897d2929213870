#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "moxcore/string/NaturalOrder.h"
#include "quillomoxui/model/QuilloNode.h"

namespace quillomoxui {

/// `nodes` in the natural order of their names; nodes whose names differ only in case keep no
/// particular order. None may be null.
template <class Node>
[[nodiscard]] NodeVector<Node> SortNodes(NodeVector<Node> const& nodes) {
    if (nodes.size() < 2) return nodes;
    std::vector<UTF16String> names;
    names.reserve(nodes.size());
    std::vector<UTF16String const*> references;
    references.reserve(nodes.size());
    for (auto const& node : nodes)
        references.push_back(&names.emplace_back(node->GetName()));

    NodeVector<Node> sorted;
    sorted.reserve(nodes.size());
    for (std::size_t position : moxcore::string::CaseInsensitive::NaturalOrder(references))
        sorted.push_back(nodes[position]);
    return sorted;
}

/// All nodes of `groups`, one group after the other.
template <class... Node>
[[nodiscard]] NodeVector<QuilloNode> JoinNodes(NodeVector<Node> const&... groups) {
    NodeVector<QuilloNode> joined;
    joined.reserve((groups.size() + ...));
    (joined.insert(joined.end(), groups.begin(), groups.end()), ...);
    return joined;
}

/// Has each of `nodes` fetch its children, in the order given. None may be null.
template <class Node>
void FetchChildrenOfEach(NodeVector<Node> const& nodes) {
    for (auto const& node : nodes)
        node->FetchChildren();
}

}  // namespace quillomoxui
