#include <utility>

#include "service/base/ApiError.h"
#include "service/operations/Metrics.h"
#include "service/routes/Api.h"
#include "service/routes/Call.h"
#include "service/routes/LocalCaller.h"
#include "service/routes/Routes.h"
#include "service/store/Store.h"

namespace quilloservice {

namespace {

/// Throws DatabaseError if the records cannot be read.
void CheckStore(Store const& store) {
    store.Read([](Database& database) { database.Query("SELECT 1").Next(); });
}

bool IsReachable(Store const& store) {
    try {
        CheckStore(store);
        return true;
    } catch (DatabaseError const&) {
        return false;
    }
}

}  // namespace

void AddOperationRoutes(Api& api, Store const& store, Metrics const& metrics,
                        std::function<Metrics::Gauges()> gauges) {
    api.Add({"GET", "/healthz", [](Call& call) { call.response.SetBody("ok", "text/plain"); }});
    api.Add({"GET", "/readyz", [&store](Call& call) {
                 CheckStore(store);
                 call.response.SetHeader("Cache-Control", "no-store");
                 call.response.SetBody("ready", "text/plain");
             }});
    api.Add({"GET", "/metrics", [&store, &metrics, gauges = std::move(gauges)](Call& call) {
                 // A proxy that passes everything on says for whom it asks.
                 if (!IsLocalProgram(call) || call.Header("X-Forwarded-For") ||
                     call.Header("Forwarded"))
                     throw ApiError::NotFound("There is nothing at this address.");
                 Metrics::Gauges now = gauges();
                 now.isStoreReachable = IsReachable(store);
                 call.response.SetHeader("Cache-Control", "no-store");
                 call.response.SetBody(metrics.Render(now), "text/plain; version=0.0.4");
             }});
}

}  // namespace quilloservice
