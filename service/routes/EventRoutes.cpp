#include <memory>

#include "service/base/ApiError.h"
#include "service/base/Text.h"
#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/EventStreams.h"
#include "service/routes/Routes.h"

namespace quilloservice {

namespace {

/// The header Last-Event-ID. The feed does not reach back to the number of a malformed one.
std::optional<ChangeNumber> LastEvent(Call const& call) {
    auto text = call.Header("Last-Event-ID");
    if (!text) return std::nullopt;
    return ChangeNumber(ParseNumber(*text).value_or(-1));
}

void Follow(Call& call, EventStreams& streams) {
    call.response.SetHeader("Cache-Control", "no-store");
    call.response.SetHeader("Content-Type", "text/event-stream");
    if (call.request.method == "HEAD") return;
    std::shared_ptr<EventStreams::Slot> slot = streams.Reserve(call.identity.session);
    EventStreams::Follower follower =
        streams.MakeFollower(call.identity.user, call.GetBearerToken(), LastEvent(call));
    call.response.takeOver = [&streams, follower, slot](int socket) {
        streams.Take(socket, follower, slot);
    };
}

}  // namespace

void AddEventRoutes(Api& api, EventStreams& streams) {
    api.Add({"GET", "/v1/events", [&streams](Call& call) { Follow(call, streams); },
             RequestKind::User});
}

}  // namespace quilloservice
