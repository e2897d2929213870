#include "host/session/FolderWay.h"

#include <algorithm>

#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloProject.h"

namespace quillohost {
namespace {

using moxcore::async::Future;
using moxcore::async::Promise;
using moxcore::utility::Guid;
using quillomoxui::QuilloFolder;
using quillomoxui::QuilloNode;
using quillomoxui::QuilloProject;
using Node = std::shared_ptr<QuilloNode>;

/// A walk down the tree; each list that it waits for holds it.
struct Walk {
    Walk(ChildLists& lists, std::vector<Guid> const& way, Node const& user)
        : lists(lists), way(way), seen{user} {}

    ChildLists& lists;
    std::vector<Guid> way;
    std::vector<Node> seen;  // the user first
    Promise<Place> promise;
};

void Advance(std::shared_ptr<Walk> const& walk) {
    auto const& here = walk->seen.back();
    if (walk->way.empty()) {
        auto const folder = quillomoxui::NodeAs<QuilloFolder>(here);
        walk->promise.SetValue(Place{walk->seen, folder});
        return;
    }
    static_cast<void>(
        walk->lists.ChildrenOf(here).Then([walk](Future<ChildLists::Children> const& list) {
            try {
                auto const children = list.Get();
                auto const next = std::find_if(
                    children.begin(), children.end(),
                    [&walk](auto const& child) { return child->GetID() == walk->way.front(); });
                if (next == children.end()) {
                    walk->promise.SetValue(Place{});
                    return;
                }
                walk->way.erase(walk->way.begin());
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

}  // namespace

Future<Place> FindByWay(ChildLists& lists, std::shared_ptr<quillomoxui::QuilloUser> const& user,
                        std::vector<Guid> const& way) {
    auto const walk = std::make_shared<Walk>(lists, way, user);
    auto place = walk->promise.GetFuture();
    Advance(walk);
    return place;
}

std::vector<Node> WayTo(std::shared_ptr<QuilloFolder> const& folder) {
    std::vector<Node> way;
    for (Node node = folder; node && node->GetParent(); node = node->GetParent())
        if (!quillomoxui::NodeAs<QuilloProject>(node->GetParent())) way.push_back(node);
    std::reverse(way.begin(), way.end());
    return way;
}

std::vector<Guid> IDsOf(std::vector<Node> const& way) {
    std::vector<Guid> ids;
    for (auto const& node : way)
        ids.push_back(node->GetID());
    return ids;
}

std::string NameOf(QuilloNode const& node) {
    return moxcore::string::UTF16to8(node.GetName());
}

}  // namespace quillohost
