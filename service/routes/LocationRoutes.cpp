#include <nlohmann/json.hpp>

#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/NodeJson.h"
#include "service/routes/Routes.h"
#include "service/store/Store.h"

namespace quilloservice {

using nlohmann::json;

namespace {

json User(Database& database, UserId const& user) {
    Statement row = database.Query("SELECT id, name FROM users WHERE id = ?", user);
    row.Next();
    return {{"id", row.Text(0)}, {"name", row.Text(1)}};
}

json Accounts(Database& database, UserId const& user) {
    Statement row = database.Query(
        "SELECT id, name FROM nodes JOIN memberships ON memberships.account = id WHERE user = ? "
        "ORDER BY seq",
        user);
    json accounts = json::array();
    while (row.Next())
        accounts.push_back({{"id", row.Text(0)}, {"name", row.Text(1)}});
    return accounts;
}

json Projects(Database& database, WorkspaceId const& workspace) {
    Statement row = database.Query(
        "SELECT project.id, project.name, root.id, root.name, root.kind "
        "FROM nodes AS project JOIN nodes AS root ON root.parent = project.id AND root.kind = ? "
        "WHERE project.parent = ? AND project.kind = ? ORDER BY project.seq",
        kind::kFolder, workspace, kind::kProject);
    json projects = json::array();
    while (row.Next()) {
        projects.push_back(
            {{"id", row.Text(0)},
             {"name", row.Text(1)},
             {"root_folder", {{"id", row.Text(2)}, {"name", row.Text(3)}, {"type", row.Text(4)}}}});
    }
    return projects;
}

}  // namespace

void AddLocationRoutes(Api& api, Store const& store) {
    // Responds with {key: list(database, call)}.
    auto add = [&](char const* path, RequestKind kind, char const* key,
                   std::function<json(Database&, Call const&)> list) {
        api.Add({"GET", path,
                 [&store, key, list = std::move(list)](Call& call) {
                     call.Respond(200, {{key, store.Read([&](Database& database) {
                                             return list(database, call);
                                         })}});
                 },
                 kind});
    };
    add("/v1/me", RequestKind::User, "user",
        [](Database& database, Call const& call) { return User(database, call.identity.user); });
    add("/v1/accounts", RequestKind::User, "accounts", [](Database& database, Call const& call) {
        return Accounts(database, call.identity.user);
    });
    add("/v1/accounts/{id}/workspaces", RequestKind::Workspaces, "workspaces",
        [](Database& database, Call const& call) {
            auto account = call.GetId<AccountId>(0);
            RequireNode(database, call.identity.user, account);
            json workspaces = json::array();
            for (Node const& node : ChildrenOf(database, account)) {
                workspaces.push_back(NamedJson(node));
            }
            return workspaces;
        });
    add("/v1/workspaces/{id}/projects", RequestKind::Projects, "projects",
        [](Database& database, Call const& call) {
            auto workspace = call.GetId<WorkspaceId>(0);
            RequireNode(database, call.identity.user, workspace);
            return Projects(database, workspace);
        });
    add("/v1/folders/{id}/children", RequestKind::Children, "assets",
        [](Database& database, Call const& call) {
            auto folder = call.GetId<FolderId>(0);
            RequireNode(database, call.identity.user, folder);
            json assets = json::array();
            for (Node const& node : ChildrenOf(database, folder)) {
                assets.push_back(TypedJson(node));
            }
            return assets;
        });
}

}  // namespace quilloservice
