#include "quillomoxui/model/NodePath.h"

#include <algorithm>
#include <utility>

#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloWorkspace.h"

namespace quillomoxui {
namespace {

/// Binds `function` to the property of `node` that holds its children, if there are any that a path
/// can go through.
std::shared_ptr<BindingHandle> BindChildren(QuilloNode& node,
                                            std::function<void()> const& function) {
    auto const bind = [&](auto& property) {
        return property.BindValueChanged([function](auto const&) { function(); });
    };
    switch (node.GetKind()) {
        case NodeKind::User:
            return bind(
                static_cast<AccountsNotifyingPropertyHost&>(static_cast<QuilloUser&>(node)));
        case NodeKind::Account:
            return bind(
                static_cast<WorkspacesNotifyingPropertyHost&>(static_cast<QuilloAccount&>(node)));
        case NodeKind::Workspace:
            return bind(
                static_cast<ProjectsNotifyingPropertyHost&>(static_cast<QuilloWorkspace&>(node)));
        case NodeKind::Project:
            return bind(
                static_cast<RootFolderNotifyingPropertyHost&>(static_cast<QuilloProject&>(node)));
        case NodeKind::Folder:
            return bind(
                static_cast<FoldersNotifyingPropertyHost&>(static_cast<QuilloFolder&>(node)));
        case NodeKind::File:
        case NodeKind::VersionStack:
        case NodeKind::Other:
            break;
    }
    return nullptr;
}

/// Of `children`, `node` itself or else the one that has taken its place; null when it is gone.
std::shared_ptr<QuilloNode> Find(NodeVector<QuilloNode> const& children,
                                 std::shared_ptr<QuilloNode> const& node) {
    if (std::find(children.begin(), children.end(), node) != children.end()) return node;
    auto const id = node->GetID();
    if (id.IsNull()) return nullptr;
    auto const found = std::find_if(children.begin(), children.end(),
                                    [&](auto const& child) { return child->GetID() == id; });
    return found == children.end() ? nullptr : *found;
}

/// Whether `node`, which is not among the children of `above`, has been taken away.
bool IsGone(QuilloNode const& node, QuilloNode const& above,
            NodeVector<QuilloNode> const& children) {
    if (node.GetParent().get() == &above) return node.HasBeenListed();
    // `above` has taken the place of the node's parent: has its list come?
    return !children.empty() || above.GetFetchChildrenState() == FetchChildrenState::Fetched;
}

}  // namespace

NodeVector<QuilloNode> WithAncestors(std::shared_ptr<QuilloNode> node) {
    NodeVector<QuilloNode> path;
    for (; node; node = node->GetParent())
        path.push_back(node);
    return path;
}

std::shared_ptr<QuilloFolder> FindInTree(std::shared_ptr<QuilloUser> const& user,
                                         std::shared_ptr<QuilloFolder> const& folder) {
    auto const path = std::make_shared<NodePath>(user, [] {});
    path->Follow(folder);
    path->Update();
    switch (path->GetState()) {
        case NodePath::State::Whole:
            return path->GetFolder();
        case NodePath::State::Pending:
            return folder;
        case NodePath::State::Broken:
            break;
    }
    return nullptr;
}

NodePath::NodePath(std::shared_ptr<QuilloUser> const& user, std::function<void()> onReplaced)
    : user(user), onReplaced(std::move(onReplaced)) {}

NodePath::~NodePath() = default;

void NodePath::Follow(std::shared_ptr<QuilloFolder> const& folder) {
    if (folder == followed) return;
    followed = folder;
    kept = WithAncestors(folder);
    state = State::Whole;
    steps.clear();
    steps.reserve(kept.size() + 1);
    // A node that was replaced before anybody kept its path ends below an account; what it says
    // is all that is known.
    if (!kept.empty() && NodeAs<QuilloAccount>(kept.back())) steps.push_back({user});
    for (auto node = kept.rbegin(); node != kept.rend(); ++node)
        // One of another user's tree goes over to this one's, too.
        steps.push_back({NodeAs<QuilloUser>(*node) ? user : *node});
    for (auto& step : steps)
        Watch(step);
}

std::shared_ptr<QuilloFolder> NodePath::GetFolder() const {
    return steps.empty() ? nullptr : NodeAs<QuilloFolder>(steps.back().node);
}

std::shared_ptr<QuilloProject> NodePath::GetProject() const {
    for (auto const& step : steps)
        if (auto project = NodeAs<QuilloProject>(step.node)) return project;
    return nullptr;
}

void NodePath::Watch(Step& step) {
    auto const update = [weakSelf = std::weak_ptr<NodePath>(Share(this))] {
        if (auto const self = weakSelf.lock()) self->Update();
    };
    step.listBinding = BindChildren(*step.node, update);
    // An empty list that comes changes nothing but this.
    step.stateBinding = static_cast<FetchChildrenStateNotifyingPropertyHost&>(*step.node)
                            .BindValueChanged([update](FetchChildrenState const&) { update(); });
}

void NodePath::Update() {
    if (state == State::Broken || !UpdateSteps()) return;
    auto const alive = Share(this);
    onReplaced();
}

bool NodePath::UpdateSteps() {
    bool hasChanged = std::exchange(state, State::Whole) != State::Whole;
    if (followed && followed->HasBeenListed() && !GetProject()) {
        // Its parent was destroyed before anything kept it, so its place is unknown.
        steps.clear();
        state = State::Broken;
        return true;
    }
    for (std::size_t i = 1; i < steps.size(); ++i) {
        auto const& above = steps[i - 1];
        auto& step = steps[i];
        auto const children = above.node->GetChildNodes();
        auto found = Find(children, step.node);
        if (!found) {
            if (!IsGone(*step.node, *above.node, children)) {
                state = State::Pending;
                return true;
            }
            steps.erase(steps.begin() + static_cast<std::ptrdiff_t>(i), steps.end());
            state = State::Broken;
            return true;
        }
        if (found == step.node) continue;
        hasChanged = true;
        step.node = std::move(found);
        Watch(step);
        auto const folder = NodeAs<QuilloFolder>(step.node);
        if (folder && i + 1 < steps.size() &&
            folder->GetFetchChildrenState() == FetchChildrenState::NotFetched)
            folder->FetchChildren();
    }
    return hasChanged;
}

}  // namespace quillomoxui
