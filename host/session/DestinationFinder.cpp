#include "host/session/DestinationFinder.h"

#include <algorithm>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/string/NaturalOrder.h"
#include "quillohostkit/process/Failure.h"
#include "quillomoxui/model/QuilloProject.h"

namespace quillohost {

using moxcore::config::Text;
namespace {

using moxcore::string::UTF16String;
using quillomoxui::NodeAs;
using quillomoxui::NodeKind;
using quillomoxui::NodeVector;
using quillomoxui::QuilloFolder;
using quillomoxui::QuilloNode;
using quillomoxui::QuilloProject;
using Node = std::shared_ptr<QuilloNode>;

constexpr std::size_t kMostListed = 20;

bool IsSameButForCase(UTF16String const& a, UTF16String const& b) {
    using moxcore::string::CaseInsensitive::NaturalStringLessThan;
    return !NaturalStringLessThan(a, b) && !NaturalStringLessThan(b, a);
}

NodeVector<QuilloNode> Named(NodeVector<QuilloNode> const& nodes, UTF16String const& name,
                             bool withCase) {
    NodeVector<QuilloNode> found;
    std::copy_if(nodes.begin(), nodes.end(), std::back_inserter(found), [&](auto const& node) {
        return withCase ? node->GetName() == name : IsSameButForCase(node->GetName(), name);
    });
    return found;
}

/// The places among `nodes`: what one can go on into.
NodeVector<QuilloNode> Places(NodeVector<QuilloNode> nodes) {
    std::erase_if(nodes, [](auto const& node) {
        return node->GetKind() == NodeKind::File || node->GetKind() == NodeKind::VersionStack;
    });
    return nodes;
}

std::string List(NodeVector<QuilloNode> const& nodes) {
    if (nodes.empty()) return Text("$$$/Vistrel/quillo-host/Places/Nothing=nothing");
    std::string text;
    for (std::size_t i = 0; i < std::min(nodes.size(), kMostListed); ++i)
        text += (i > 0 ? ", \"" : "\"") + quillohostkit::NameOf(*nodes[i]) + "\"";
    if (nodes.size() > kMostListed)
        return Text("$$$/Vistrel/quillo-host/Places/More={places} and {number} more",
                    {{"places", text}, {"number", std::to_string(nodes.size() - kMostListed)}});
    return text;
}

std::string Describe(QuilloNode const& node) {
    if (node.GetKind() == NodeKind::User)
        return Text("$$$/Vistrel/quillo-host/Places/Accounts=among the accounts");
    return Text("$$$/Vistrel/quillo-host/Places/In=in \"{place}\"",
                {{"place", quillohostkit::NameOf(node)}});
}

}  // namespace

DestinationFinder::DestinationFinder(Session& session,
                                     std::shared_ptr<quillomoxui::QuilloUser> user)
    : session(session), user(std::move(user)) {}

NodeVector<QuilloNode> DestinationFinder::ChildrenOf(Node const& parent) {
    auto children = session.AwaitLists(session.Lists().ChildrenOf(parent));
    seen.insert(seen.end(), children.begin(), children.end());
    return children;
}

Node DestinationFinder::FindChild(Node const& parent, std::string const& name) {
    auto const places = Places(ChildrenOf(parent));
    auto const wanted = moxcore::string::UTF8to16(name);
    auto found = Named(places, wanted, true);
    if (found.empty()) found = Named(places, wanted, false);
    if (found.size() == 1) return found.front();
    if (found.empty())
        throw quillohostkit::Failure(
            quillohostkit::FailureKind::Location,
            Text("$$$/Vistrel/quillo-host/Places/None=There is no \"{name}\" {where}; there is "
                 "{places}.",
                 {{"name", name}, {"where", Describe(*parent)}, {"places", List(places)}}));
    throw quillohostkit::Failure(
        quillohostkit::FailureKind::Location,
        Text("$$$/Vistrel/quillo-host/Places/Several=There is more than one \"{name}\" {where}; "
             "rename one: {places}.",
             {{"name", name}, {"where", Describe(*parent)}, {"places", List(found)}}));
}

DestinationFinder::Folder DestinationFinder::FindByNamePath(quillohostkit::NamePath const& path) {
    Node place = user;
    for (auto const& name : path) {
        place = FindChild(place, name);
        if (auto const project = NodeAs<QuilloProject>(place)) place = project->GetRootFolder();
    }
    if (auto folder = NodeAs<QuilloFolder>(place)) return folder;
    throw quillohostkit::Failure(
        quillohostkit::FailureKind::Location,
        Text("$$$/Vistrel/quillo-host/Places/NoProjectYet=\"{path}\" is no project yet; go on with "
             "one of {places}.",
             {{"path", quillohostkit::JoinNamePath(path)}, {"places", List(ChildrenOf(place))}}));
}

DestinationFinder::Folder DestinationFinder::FindByIDPath(quillohostkit::IDPath const& path) {
    auto const found = session.AwaitLists(quillohostkit::FindByIDPath(session.Lists(), user, path));
    seen.insert(seen.end(), found.above.begin(), found.above.end());
    return found.folder;
}

bool DestinationFinder::Holds(Folder const& folder, Guid const& id) {
    auto const children = ChildrenOf(folder);
    return std::any_of(children.begin(), children.end(),
                       [&id](auto const& child) { return child->GetID() == id; });
}

DestinationFinder::Folder DestinationFinder::FindFirstProject() {
    for (auto const& account : ChildrenOf(user))
        for (auto const& workspace : ChildrenOf(account))
            for (auto const& project : ChildrenOf(workspace))
                return NodeAs<QuilloProject>(project)->GetRootFolder();
    throw quillohostkit::Failure(quillohostkit::FailureKind::Location,
                                 Text("$$$/Vistrel/quillo-host/Places/NoProject=There is no "
                                      "project to share to; have one made in the service first."));
}

}  // namespace quillohost
