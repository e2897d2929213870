#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloUser.h"

namespace quillomoxui {

/// `node` and all above it, from the bottom to the top. As long as the result is kept, they know
/// their parents: a child does not keep its parent itself.
[[nodiscard]] NodeVector<QuilloNode> WithAncestors(std::shared_ptr<QuilloNode> node);

/// `folder` as the user's tree has it now: itself, or the new node of its ID in a list that was
/// fetched again; itself, too, while that list is on its way. Null when it is gone. Main thread.
[[nodiscard]] std::shared_ptr<QuilloFolder> FindInTree(std::shared_ptr<QuilloUser> const& user,
                                                       std::shared_ptr<QuilloFolder> const& folder);

/// The nodes from the top of the tree down to a folder. A list that is fetched again comes with new
/// nodes: the path then goes on with those of the same IDs, level by level as their lists come in,
/// for which it asks where nobody has. Made with std::make_shared. Main thread.
class NodePath : public virtual moxcore::utility::EnableSharedAs {
public:
    enum class State {
        Whole,    ///< all nodes are in the tree
        Pending,  ///< the list that would hold the next node has not come yet
        Broken,   ///< the rest is gone: the path ends at what is left of it
    };

    /// `onReplaced` runs when nodes of the path have been replaced or are gone.
    NodePath(std::shared_ptr<QuilloUser> const& user, std::function<void()> onReplaced);
    ~NodePath() override;

    /// Begins anew with the path to `folder`; null for none.
    void Follow(std::shared_ptr<QuilloFolder> const& folder);

    /// Brings the path up to date without waiting for change notifications.
    void Update();

    /// The folder given to Follow.
    [[nodiscard]] std::shared_ptr<QuilloFolder> const& GetFollowed() const { return followed; }
    [[nodiscard]] State GetState() const { return state; }
    /// The last node of the path as it is now, when it is a folder.
    [[nodiscard]] std::shared_ptr<QuilloFolder> GetFolder() const;
    [[nodiscard]] std::shared_ptr<QuilloProject> GetProject() const;

private:
    struct Step {
        std::shared_ptr<QuilloNode> node;
        std::shared_ptr<BindingHandle> listBinding;
        std::shared_ptr<BindingHandle> stateBinding;
    };

    void Watch(Step& step);
    bool UpdateSteps();

    std::shared_ptr<QuilloUser> const user;
    std::function<void()> const onReplaced;
    std::shared_ptr<QuilloFolder> followed;
    NodeVector<QuilloNode> kept;  // the followed folder and its ancestors
    std::vector<Step> steps;      // from the top
    State state = State::Whole;
};

}  // namespace quillomoxui
