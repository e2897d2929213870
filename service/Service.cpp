#include "service/Service.h"

#include <sys/resource.h>

#include <cstdio>
#include <optional>
#include <stdexcept>

#include "service/Options.h"
#include "service/base/Clock.h"
#include "service/http/Server.h"
#include "service/oauth/AuthorizationCodes.h"
#include "service/oauth/LocalUserSecret.h"
#include "service/oauth/Sessions.h"
#include "service/operations/Metrics.h"
#include "service/operations/RequestLog.h"
#include "service/routes/Api.h"
#include "service/routes/EventStreams.h"
#include "service/routes/Routes.h"
#include "service/store/ChangeFeed.h"
#include "service/store/DataDirectory.h"
#include "service/store/Locations.h"
#include "service/store/ReviewLinks.h"
#include "service/store/SampleData.h"
#include "service/store/postgresql/PostgresqlStore.h"
#include "service/store/sqlite/SqliteStore.h"
#include "service/uploads/Uploads.h"

namespace quilloservice {

namespace {

int Listen(http::Server& server, DataDirectory const& directory, Options const& options) {
    int port = -1;
    if (options.port != 0) {
        port = server.Bind(options.host, options.port);
    } else {
        if (int last = directory.GetLastPort()) port = server.Bind(options.host, last);
        if (port <= 0) port = server.Bind(options.host, 0);
    }
    if (port <= 0) {
        throw std::runtime_error("cannot listen on " + options.host + " port " +
                                 std::to_string(options.port) +
                                 "; is the port taken, or the address not this machine's?");
    }
    directory.RememberPort(port);
    return port;
}

http::Limits HttpLimits(Options const& options) {
    http::Limits limits = options.http;
    rlimit descriptors{};
    ::getrlimit(RLIMIT_NOFILE, &descriptors);
    limits.connections = http::ConnectionsWithin(descriptors.rlim_cur);
    limits.latency = options.faults.latency;
    limits.beginMayWait = !options.database.empty();  // it looks the token up
    return limits;
}

std::string AddressOf(std::string const& host, int port) {
    bool bracketed = host.find(':') != std::string::npos;
    return "http://" + (bracketed ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

void WriteToStandardError(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

std::unique_ptr<Store> OpenStore(DataDirectory const& directory, Options const& options) {
    if (options.database.empty()) return std::make_unique<SqliteStore>(directory.GetStorePath());
    return std::make_unique<PostgresqlStore>(options.database);
}

}  // namespace

struct Service::Parts {
    explicit Parts(Options const& options)
        : directory(options.dataDirectory),
          ownedStore(OpenStore(directory, options)),
          store(*ownedStore),
          sessions(store, SystemTime),
          codes(sessions, SystemTime),
          changes(store),
          locations(store, changes),
          uploads(directory, store, changes, SystemTime),
          links(store, SystemTime),
          events(changes, sessions),
          log(options.logRequests ? std::make_unique<RequestLog>(WriteToStandardError) : nullptr),
          api(sessions,
              {options.limit, options.faults.failRate, options.allowOrigin, options.publicAddress,
               options.proxy, /*isStoreRemote=*/!options.database.empty(),
               [this](auto const& exchange, auto const& outcome) {
                   metrics.Count(exchange, outcome);
                   if (log) log->Add(exchange, outcome);
               }}),
          server(api, HttpLimits(options)) {
        MakeSampleData(store, options.sample);
        uploads.Recover();
        port = Listen(server, directory, options);
        address = AddressOf(options.host, port);
        if (options.trustLocalUser) localUser.emplace(options.host, port);
        AddSignInRoutes(api, sessions, codes, localUser ? &*localUser : nullptr, options.limit);
        AddAuthorizeRoutes(api, store, codes, SystemTime);
        AddLocationRoutes(api, store);
        AddLocationChangeRoutes(api, locations);
        AddEventRoutes(api, events);
        AddPageRoutes(api);
        AddUploadRoutes(api, uploads, options.faults);
        AddLinkRoutes(api, links, address);
        AddReviewerRoutes(api, links, directory);
        AddOperationRoutes(api, store, metrics, [this] {
            return Metrics::Gauges{.connections = server.CountConnections(),
                                   .freeBytes = directory.FreeBytes()};
        });
    }

    DataDirectory directory;
    std::unique_ptr<Store> ownedStore;
    Store& store;
    Sessions sessions;
    AuthorizationCodes codes;
    ChangeFeed changes;
    Locations locations;
    Uploads uploads;
    ReviewLinks links;
    EventStreams events;
    Metrics metrics;
    std::unique_ptr<RequestLog> const log;  // null: requests are not logged
    Api api;
    http::Server server;
    int port = 0;
    std::string address;
    std::optional<LocalUserSecret> localUser;
};

Service::Service(Options const& options) : parts(std::make_unique<Parts>(options)) {}

Service::~Service() = default;

std::string const& Service::GetAddress() const {
    return parts->address;
}

int Service::GetPort() const {
    return parts->port;
}

void Service::Run() {
    parts->server.Run();
}

void Service::Drain() {
    parts->server.Drain();
}

void Service::Stop() {
    parts->server.Stop();
}

}  // namespace quilloservice
