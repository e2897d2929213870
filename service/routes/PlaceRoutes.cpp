#include <nlohmann/json.hpp>

#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/NodeJson.h"
#include "service/routes/Routes.h"
#include "service/store/Places.h"

namespace quilloservice {

using nlohmann::json;

namespace {

json InJson(Place const& place) {
    if (place.node.kind == kind::Folder) return TypedJson(place.node);
    json object = NamedJson(place.node);
    if (place.root) object["root_folder"] = TypedJson(*place.root);
    return object;
}

/// The places of one kind, as the addresses and answers name them.
struct PlaceKind {
    std::string_view kind;
    std::string path;       ///< of one such place
    std::string addPath;    ///< where new ones are made
    char const* answerKey;  ///< the member of the answer
};

std::vector<PlaceKind> const& Kinds() {
    static std::vector<PlaceKind> const kinds = {
        {kind::Account, "/v1/accounts/{id}", "/v1/accounts", "account"},
        {kind::Workspace, "/v1/workspaces/{id}", "/v1/accounts/{id}/workspaces", "workspace"},
        {kind::Project, "/v1/projects/{id}", "/v1/workspaces/{id}/projects", "project"},
        {kind::Folder, "/v1/folders/{id}", "/v1/folders/{id}/children", "asset"},
    };
    return kinds;
}

}  // namespace

void AddPlaceRoutes(Api& api, Places& places) {
    for (PlaceKind const& each : Kinds()) {
        auto answer = [key = each.answerKey](Call& call, int status, Place const& place) {
            call.Answer(status, {{key, InJson(place)}});
        };
        api.Add({"POST", each.addPath,
                 [&places, answer, kind = each.kind](Call& call) {
                     std::string const& user = call.identity.user;
                     std::string name = call.ReadName();
                     answer(call, 201,
                            kind == kind::Account ? places.AddAccount(user, name)
                                                  : places.Add(user, kind, call.ids[0], name));
                 },
                 RequestKind::Changes});
        api.Add({"PATCH", each.path,
                 [&places, answer, kind = each.kind](Call& call) {
                     answer(call, 200,
                            places.Rename(call.identity.user, kind, call.ids[0], call.ReadName()));
                 },
                 RequestKind::Changes});
        api.Add({"DELETE", each.path,
                 [&places, kind = each.kind](Call& call) {
                     places.Remove(call.identity.user, kind, call.ids[0]);
                     call.response.status = 204;
                 },
                 RequestKind::Changes});
    }
}

}  // namespace quilloservice
