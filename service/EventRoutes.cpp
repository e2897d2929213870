#include <httplib.h>

#include "service/Api.h"
#include "service/ApiError.h"
#include "service/Call.h"
#include "service/Connection.h"
#include "service/EventStreams.h"
#include "service/HttpServer.h"
#include "service/Routes.h"

namespace quilloservice {

void AddEventRoutes(Api& api, EventStreams& streams) {
    api.Add({"GET", "/v1/events",
             [&streams](Call& call) {
                 constexpr std::string_view scheme = "Bearer ";
                 EventStreams::Follower follower{
                     call.identity.user,
                     call.request.get_header_value("Authorization").substr(scheme.size()),
                     call.Header("Last-Event-ID")};
                 call.response.set_header("Cache-Control", "no-store");
                 call.response.set_header("Connection", "close");
                 if (call.request.method == "HEAD") return;
                 if (!streams.Reserve()) {
                     call.response.set_header("Retry-After", "10");
                     throw ApiError(503, "unavailable",
                                    "As many clients as the service takes follow its changes.");
                 }
                 HttpServer::ThisConnection().HandOver(
                     [&streams, follower](socket_t socket) { streams.Take(socket, follower); });
                 // Only the head is sent here.
                 call.response.set_content_provider("text/event-stream",
                                                    [](std::size_t, httplib::DataSink& sink) {
                                                        sink.done();
                                                        return true;
                                                    });
             },
             RequestKind::User});
}

}  // namespace quilloservice
