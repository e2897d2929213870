#include <nlohmann/json.hpp>

#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/NodeJson.h"
#include "service/routes/Routes.h"
#include "service/store/Locations.h"

namespace quilloservice {

using nlohmann::json;

namespace {

json InJson(Location const& location) {
    if (location.node.kind == kind::kFolder) return TypedJson(location.node);
    json object = NamedJson(location.node);
    if (location.root) object["root_folder"] = TypedJson(*location.root);
    return object;
}

/// Adds the route that creates a location in the parent whose ID is in `path`. `key` is the member
/// of the response.
template <typename ParentId>
void AddCreation(Api& api, Locations& locations, std::string path, char const* key) {
    api.Add({"POST", std::move(path),
             [&locations, key](Call& call) {
                 Location made =
                     locations.Add(call.identity.user, call.GetId<ParentId>(0), call.ReadName());
                 call.Respond(201, {{key, InJson(made)}});
             },
             RequestKind::Changes});
}

/// Adds the routes that rename and remove the location whose ID is in `path`.
template <typename LocationId>
void AddChanges(Api& api, Locations& locations, std::string const& path, char const* key) {
    api.Add({"PATCH", path,
             [&locations, key](Call& call) {
                 Location renamed = locations.Rename(call.identity.user, call.GetId<LocationId>(0),
                                                     call.ReadName());
                 call.Respond(200, {{key, InJson(renamed)}});
             },
             RequestKind::Changes});
    api.Add({"DELETE", path,
             [&locations](Call& call) {
                 locations.Remove(call.identity.user, call.GetId<LocationId>(0));
                 call.response.status = 204;
             },
             RequestKind::Changes});
}

}  // namespace

void AddLocationChangeRoutes(Api& api, Locations& locations) {
    api.Add({"POST", "/v1/accounts",
             [&locations](Call& call) {
                 Location made = locations.AddAccount(call.identity.user, call.ReadName());
                 call.Respond(201, {{"account", InJson(made)}});
             },
             RequestKind::Changes});
    AddCreation<AccountId>(api, locations, "/v1/accounts/{id}/workspaces", "workspace");
    AddCreation<WorkspaceId>(api, locations, "/v1/workspaces/{id}/projects", "project");
    AddCreation<FolderId>(api, locations, "/v1/folders/{id}/children", "asset");
    AddChanges<AccountId>(api, locations, "/v1/accounts/{id}", "account");
    AddChanges<WorkspaceId>(api, locations, "/v1/workspaces/{id}", "workspace");
    AddChanges<ProjectId>(api, locations, "/v1/projects/{id}", "project");
    AddChanges<FolderId>(api, locations, "/v1/folders/{id}", "asset");
}

}  // namespace quilloservice
