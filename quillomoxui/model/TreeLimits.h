#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "quillomoxui/model/QuilloNode.h"

namespace quillomoxui::model {

// Limits on what the tree of locations accepts from a service: the tree is walked recursively, and
// its names are drawn. Any thread.

/// A name as the tree holds it: of one with more than 1,000 characters the beginning, and "…".
[[nodiscard]] UTF16String NameForTree(std::string const& utf8);

/// Sorts out the folders of one list that would make the tree endless. Make one for each list.
class FolderFilter {
public:
    /// The list is that of `parent`.
    explicit FolderFilter(QuilloNode& parent);

    /// Whether the folder `id` may be a child: not when it is the parent, or lies above it, nor
    /// when the path to it would have more than 256 nodes.
    [[nodiscard]] bool Admits(moxcore::utility::Guid const& id);

    /// Reports, once, that folders were left out, if any were.
    void Report() const;

private:
    std::vector<moxcore::utility::Guid> foldersAbove;  // the parent included
    bool isAtTheEnd = false;
    std::size_t leftOut = 0;
    moxcore::utility::Guid firstLeftOut;
};

}  // namespace quillomoxui::model
