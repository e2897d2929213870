#include "quillohostkit/session/FolderPath.h"

#include <algorithm>

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloProject.h"

namespace quillohostkit {
namespace {

using moxcore::async::Future;
using moxcore::async::Promise;
using quillomoxui::QuilloFolder;
using quillomoxui::QuilloNode;
using quillomoxui::QuilloProject;
using Node = std::shared_ptr<QuilloNode>;

/// A walk down the tree; each list that it waits for holds it.
struct Walk {
    Walk(ChildLists& lists, IDPath const& path, Node const& user)
        : lists(lists), rest(path), seen{user} {}

    ChildLists& lists;
    IDPath rest;
    std::vector<Node> seen;  // the user first
    Promise<FolderPath> promise;
};

void Advance(std::shared_ptr<Walk> const& walk) {
    auto const& here = walk->seen.back();
    if (walk->rest.empty()) {
        auto const folder = quillomoxui::NodeAs<QuilloFolder>(here);
        walk->promise.SetValue(FolderPath{walk->seen, folder});
        return;
    }
    static_cast<void>(
        walk->lists.ChildrenOf(here).Then([walk](Future<ChildLists::Children> const& list) {
            try {
                auto const children = list.Get();
                auto const next = std::find_if(
                    children.begin(), children.end(),
                    [&walk](auto const& child) { return child->GetID() == walk->rest.front(); });
                if (next == children.end()) {
                    walk->promise.SetValue(FolderPath{});
                    return;
                }
                walk->rest.erase(walk->rest.begin());
                walk->seen.push_back(*next);
                if (auto const project = quillomoxui::NodeAs<QuilloProject>(*next))
                    walk->seen.push_back(project->GetRootFolder());
            } catch (...) {
                walk->promise.SetException(std::current_exception());
                return;
            }
            Advance(walk);
        }));
}

/// From the account down to `folder`, without the project's root folder.
std::vector<Node> NodesTo(std::shared_ptr<QuilloFolder> const& folder) {
    std::vector<Node> nodes;
    for (Node node = folder; node && node->GetParent(); node = node->GetParent())
        if (!quillomoxui::NodeAs<QuilloProject>(node->GetParent())) nodes.push_back(node);
    std::reverse(nodes.begin(), nodes.end());
    return nodes;
}

}  // namespace

Future<FolderPath> FindByIDPath(ChildLists& lists,
                                std::shared_ptr<quillomoxui::QuilloUser> const& user,
                                IDPath const& path) {
    auto const walk = std::make_shared<Walk>(lists, path, user);
    auto found = walk->promise.GetFuture();
    Advance(walk);
    return found;
}

IDPath IDPathOf(std::shared_ptr<QuilloFolder> const& folder) {
    IDPath path;
    for (auto const& node : NodesTo(folder))
        path.push_back(node->GetID());
    return path;
}

NamePath NamePathOf(std::shared_ptr<QuilloFolder> const& folder) {
    NamePath path;
    for (auto const& node : NodesTo(folder))
        path.push_back(NameOf(*node));
    return path;
}

std::string NameOf(QuilloNode const& node) {
    return moxcore::string::UTF16to8(node.GetName());
}

}  // namespace quillohostkit
