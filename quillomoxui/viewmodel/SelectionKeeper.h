#pragma once

#include <memory>

#include "quillomoxui/model/NodePath.h"

namespace quillomoxui {

/// Keeps a user's selection in the tree, whether a picker is shown or not: a list that is fetched
/// again comes with new nodes, and the selection then goes over to the new folder of its ID, once
/// that is there, and a proposal that is the selection goes along. Until then the former one keeps
/// its place below its project. When the folder is gone, or what it lies in, the selection is lost:
/// the folder above it is another place, which other people may see. Made with std::make_shared;
/// destroyed by any thread.
class SelectionKeeper : public virtual moxcore::utility::EnableSharedAs {
public:
    explicit SelectionKeeper(std::shared_ptr<QuilloUser> const& user);
    ~SelectionKeeper() override;

    /// Begins. Called once, by any thread; the rest happens on the main thread.
    void Start();

private:
    void OnReplaced();

    std::shared_ptr<QuilloUser> const user;
    std::shared_ptr<NodePath> path;          // main thread; none before the first selection
    std::shared_ptr<BindingHandle> binding;  // to the selection; set by Start
};

}  // namespace quillomoxui
