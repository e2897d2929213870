#include "host/commands/LocationsCommand.h"

#include <nlohmann/json.hpp>
#include <vector>

#include "host/process/Terminal.h"
#include "host/session/DestinationFinder.h"
#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/Failure.h"
#include "quillomoxui/model/QuilloProject.h"

namespace quillohost {

using moxcore::config::Text;
namespace {

using nlohmann::ordered_json;
using Node = std::shared_ptr<quillomoxui::QuilloNode>;

/// The node that has the children that stand below `node`.
Node ParentOfChildren(Node const& node) {
    auto const project = quillomoxui::NodeAs<quillomoxui::QuilloProject>(node);
    return project ? project->GetRootFolder() : node;
}

ordered_json Describe(Session& session, Node const& node, int levels) {
    ordered_json described{{"id", node->GetID().AsStdString()},
                           {"name", quillohostkit::NameOf(*node)},
                           {"type", quillomoxui::TextsOf(node->GetKind()).name},
                           {"children", ordered_json::array()}};
    if (levels == 0) return described;
    auto const children = session.AwaitLists(session.Lists().ChildrenOf(ParentOfChildren(node)));
    // All at once, so that the library may have as many on their way as the service allows.
    if (levels > 1)
        for (auto const& child : children)
            quillohostkit::ChildLists::StartFetching(ParentOfChildren(child));
    for (auto const& child : children)
        described["children"].push_back(Describe(session, child, levels - 1));
    return described;
}

void AddLines(ordered_json const& place, std::string const& indentation,
              std::vector<std::string>& lines) {
    auto line = indentation + std::string(place["name"]);
    if (place["type"] == "file")
        line += "  " + Text("$$$/Vistrel/quillo-host/Locations/File=(file)");
    if (place["type"] == "version_stack")
        line += "  " + Text("$$$/Vistrel/quillo-host/Locations/Versions=(versions)");
    lines.push_back(std::move(line));
    for (auto const& child : place["children"])
        AddLines(child, indentation + "  ", lines);
}

std::vector<std::string> Print(Session& session, Node const& user, Options const& options) {
    auto const described = Describe(session, user, options.depth);
    if (options.json) return JsonLines(described);
    std::vector<std::string> lines;
    AddLines(described, "", lines);
    return lines;
}

Node SignIn(Session& session) {
    auto user = session.SignIn();
    session.Display().Tell(
        Text("$$$/Vistrel/quillo-host/Locations/Reading=Reading the places of {user}",
             {{"user", quillohostkit::NameOf(*user)}}));
    return user;
}

/// The nodes that there are at the moment, `levels` below `node`.
void AddNodes(Node const& node, int levels, std::vector<Node>& nodes) {
    if (levels == 0) return;
    for (auto const& child : ParentOfChildren(node)->GetChildNodes()) {
        nodes.push_back(child);
        AddNodes(child, levels - 1, nodes);
    }
}

std::vector<Node> NodesBelow(Node const& node, int levels) {
    std::vector<Node> nodes;
    AddNodes(node, levels, nodes);
    return nodes;
}

}  // namespace

std::vector<std::string> ListLocations(Session& session, Options const& options) {
    return Print(session, SignIn(session), options);
}

void WatchLocations(Session& session, Options const& options,
                    std::function<void(std::vector<std::string> const&)> const& print) {
    auto const user = SignIn(session);
    std::vector<std::string> shown;
    for (;;) {
        // A list that changes has other nodes, and each of its nodes wakes the loop.
        auto known = NodesBelow(user, options.depth);
        auto const isAsKnown = [&] { return NodesBelow(user, options.depth) == known; };
        try {
            if (auto lines = Print(session, user, options); lines != shown) {
                print(lines);
                shown = std::move(lines);
            }
        } catch (quillohostkit::Failure const& failure) {
            // A place that is gone cannot be read; those above it say so in a moment.
            if (failure.GetKind() != quillohostkit::FailureKind::Location || isAsKnown()) throw;
            continue;
        }
        session.Loop().WaitUntil([&] { return !isAsKnown(); });
    }
}

}  // namespace quillohost
