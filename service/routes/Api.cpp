#include "service/routes/Api.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <random>

#include "service/base/ApiError.h"
#include "service/base/Digest.h"
#include "service/base/Text.h"
#include "service/http/Address.h"
#include "service/routes/RequestCount.h"
#include "service/routes/TusProtocol.h"
#include "service/store/Database.h"

namespace quilloservice {

namespace {

constexpr std::array kMethods = {"GET", "HEAD", "POST", "PUT", "PATCH", "DELETE"};

bool IsUnder(std::string_view path, std::string_view root) {
    return path.starts_with(root) && (path.size() == root.size() || path[root.size()] == '/');
}

std::string_view NextSegment(std::string_view& path) {
    std::size_t end = path.find('/', 1);
    std::string_view segment = path.substr(0, end);
    path.remove_prefix(segment.size());
    return segment;
}

/// The IDs in `path` if it matches `pattern`.
std::optional<std::vector<PathId>> MatchPath(std::string_view pattern, std::string_view path) {
    std::vector<PathId> ids;
    while (!pattern.empty()) {
        std::string_view expected = NextSegment(pattern);
        if (expected == "/{rest}") return ids;
        std::string_view segment = NextSegment(path);
        if (expected == "/{id}") {
            if (segment.empty()) return std::nullopt;
            std::optional<PathId> id = PathId::Parse(segment.substr(1));
            if (!id) return std::nullopt;
            ids.push_back(*std::move(id));
        } else if (expected != segment) {
            return std::nullopt;
        }
    }
    if (!path.empty()) return std::nullopt;
    return ids;
}

void CheckBodyForm(Call const& call) {
    std::string encoding = call.Header("Content-Encoding").value_or("identity");
    std::string_view type = call.request.Header("Content-Type").value_or("");
    constexpr std::string_view kParts = "multipart/";
    if (!http::EqualsIgnoringCase(encoding, "identity") ||
        http::EqualsIgnoringCase(type.substr(0, kParts.size()), kParts)) {
        throw ApiError::BadRequest("Bodies are taken neither compressed nor in parts.");
    }
}

/// Whether a request of this method has no body and only reads, from the store and from memory.
bool IsRead(std::string_view method) {
    return method == "GET" || method == "HEAD" || method == "OPTIONS";
}

bool HappensWith(double probability) {
    if (probability <= 0) return false;
    thread_local std::mt19937_64 random{std::random_device{}()};
    return std::uniform_real_distribution<double>(0, 1)(random) < probability;
}

/// The request's own ID, which a proxy or a client may have given to it, or a new one.
std::string RequestId(http::Request const& request) {
    constexpr std::size_t kLongest = 64;
    for (auto const& [name, value] : request.headers) {
        if (!http::EqualsIgnoringCase(name, "X-Request-Id")) continue;
        bool plain = std::all_of(value.begin(), value.end(), [](unsigned char c) {
            return std::isalnum(c) != 0 || c == '-' || c == '_' || c == '.';
        });
        if (plain && !value.empty() && value.size() <= kLongest) return value;
        break;
    }
    return ToHex(RandomBytes(8));
}

void Identify(http::Exchange& exchange) {
    exchange.id = RequestId(exchange.request);
    exchange.response.SetHeader("X-Request-Id", exchange.id);
}

/// The client for which a proxy asks: the last address in X-Forwarded-For, which the proxy itself
/// has added; the proxy's if there is none.
std::string ClientOf(http::Request const& request) {
    auto const header = request.ListHeader("X-Forwarded-For");
    auto const addresses = http::ListElements(header ? std::string_view(*header) : "");
    auto address = http::ParseAddress(addresses.empty() ? "" : std::string(addresses.back()));
    return address.value_or(request.remoteAddress);
}

void Respond(Call& call, ApiError const& error) {
    if (error.retryAfter > 0) {
        call.response.SetHeader("Retry-After", std::to_string(error.retryAfter));
    }
    call.RespondWithError(error.status, error.code, error.what());
}

void RespondWithStoreError(Call& call, DatabaseError const& error) {
    using Kind = DatabaseError::Kind;
    switch (error.kind) {
        case Kind::Full:
            return Respond(call, ApiError::StorageFull());
        case Kind::Unavailable:
        case Kind::Collision:
            return Respond(call, ApiError::StoreUnavailable());
        case Kind::Other:
            break;
    }
    Respond(call, {500, "internal", "The service's store failed."});
}

void LogFailure(Call const& call, std::exception const& error) {
    std::fprintf(stderr, "quillo-service: %s [request %s]\n", error.what(),
                 call.GetRequestId().c_str());
}

/// Runs `work` and turns an exception into the response. Returns whether there was none.
template <typename Work>
bool Guard(Call& call, Work&& work) {
    try {
        work();
        return true;
    } catch (ApiError const& error) {
        Respond(call, error);
    } catch (DatabaseError const& error) {
        LogFailure(call, error);
        RespondWithStoreError(call, error);
    } catch (std::exception const& error) {
        LogFailure(call, error);
        call.RespondWithError(500, "internal", "The service failed.");
    }
    return false;
}

}  // namespace

Api::Api(Sessions const& sessions, Settings settings)
    : sessions(sessions), settings(std::move(settings)), limiter(this->settings.limit) {}

void Api::Add(Route route) {
    routes.push_back(std::move(route));
}

http::Action Api::Begin(std::shared_ptr<http::Exchange> exchange) {
    Identify(*exchange);
    if (exchange->request.remoteAddress == settings.proxy)
        exchange->request.remoteAddress = ClientOf(exchange->request);
    auto call = std::make_shared<Call>(std::move(exchange));
    call->SetOwnAddress(settings.publicAddress);
    std::string method = call->request.method;
    Route const* route = nullptr;
    bool admitted = Guard(*call, [&] {
        AllowOrigin(*call);
        bool speaksTus = IsUnder(call->request.path, "/v1/uploads");
        if (speaksTus) method = tus::EffectiveMethod(*call);
        if (method == "OPTIONS") {
            RespondToOptions(*call);
        } else {
            if (speaksTus) tus::SetVersion(*call);
            route = &Admit(*call, method);
            CheckBodyForm(*call);
        }
    });
    if (!admitted || route == nullptr) {
        return {.quick = true, .finish = [](bool) {}};
    }
    if (route->sink) {
        std::shared_ptr<BodySink> sink;
        if (!Guard(*call, [&] { sink = route->sink(*call); })) {
            return {.quick = true, .finish = [](bool) {}};
        }
        return {
            .body = http::Action::Body::Stream,
            .open = [call, sink] { return Guard(*call, [&] { sink->Open(); }); },
            .take = [call, sink](auto piece) { return Guard(*call, [&] { sink->Take(piece); }); },
            .finish = [call,
                       sink](bool complete) { Guard(*call, [&] { sink->Finish(complete); }); }};
    }
    bool reads = IsRead(method);
    return {
        .body = reads || method == "DELETE" ? http::Action::Body::None : http::Action::Body::Small,
        .quick = reads && !settings.isStoreRemote,
        .finish = [call, route](bool complete) {
            Guard(*call, [&] {
                if (!complete) throw ApiError::BadRequest("The body ended early.");
                route->handler(*call);
            });
        }};
}

void Api::Refuse(http::Exchange& exchange, int status, std::string_view code,
                 std::string_view message) {
    if (exchange.id.empty()) Identify(exchange);
    // Not owned: the exchange belongs to the caller and outlives the call.
    Call call(std::shared_ptr<http::Exchange>(&exchange, [](http::Exchange*) {}));
    call.RespondWithError(status, code, message);
}

void Api::Ended(http::Exchange const& exchange, http::Outcome const& outcome) {
    if (settings.onEnded) settings.onEnded(exchange, outcome);
}

Api::Route const& Api::Admit(Call& call, std::string const& method) {
    std::string const& path = call.request.path;
    bool restricted = IsUnder(path, "/v1");
    if (restricted && HappensWith(settings.failRate)) {
        throw ApiError(500, "internal", "A simulated failure (--fail).");
    }
    Route const* route = Match(method, path, call.pathIds);
    if (route != nullptr) call.SetRoute(route->path);
    if (restricted) call.identity = Authorize(call);
    if (route == nullptr) {
        std::string allowed = AllowedMethods(path);
        if (allowed.empty()) throw ApiError::NotFound("There is nothing at this address.");
        call.response.SetHeader("Allow", allowed);
        throw ApiError(405, "method_not_allowed", "This address takes " + allowed + " only.");
    }
    if (route->kind) {
        CountRequest(call, limiter, RequesterOf(call.identity.session), *route->kind);
    }
    return *route;
}

Api::Route const* Api::Match(std::string const& method, std::string const& path,
                             std::vector<PathId>& ids) const {
    for (Route const& route : routes) {
        if (route.method != method) continue;
        if (auto found = MatchPath(route.path, path)) {
            ids = *std::move(found);
            return &route;
        }
    }
    return method == "HEAD" ? Match("GET", path, ids) : nullptr;
}

std::string Api::AllowedMethods(std::string const& path) const {
    std::string allowed;
    for (char const* method : kMethods) {
        std::vector<PathId> ignored;
        if (Match(method, path, ignored)) allowed += std::string(method) + ", ";
    }
    return allowed.empty() ? allowed : allowed + "OPTIONS";
}

/// OPTIONS needs no token: a browser's preflight request has none.
void Api::RespondToOptions(Call& call) const {
    std::string const& path = call.request.path;
    std::string allowed = AllowedMethods(path);
    if (path == "*") allowed = "GET, HEAD, POST, PATCH, DELETE, OPTIONS";
    if (allowed.empty()) throw ApiError::NotFound("There is nothing at this address.");
    call.response.status = 204;
    call.response.SetHeader("Allow", allowed);
    if (IsUnder(path, "/v1/uploads")) tus::Describe(call);
    if (!call.response.HasHeader("Access-Control-Allow-Origin")) return;
    call.response.SetHeader("Access-Control-Allow-Methods", allowed);
    call.response.SetHeader("Access-Control-Allow-Headers", tus::kRequestHeaders);
    call.response.SetHeader("Access-Control-Max-Age", "7200");
}

/// Sets the CORS headers for pages of the allowed origin.
void Api::AllowOrigin(Call& call) const {
    if (settings.allowOrigin.empty()) return;
    call.response.SetHeader("Vary", "Origin");
    if (call.Header("Origin") != settings.allowOrigin) return;
    call.response.SetHeader("Access-Control-Allow-Origin", settings.allowOrigin);
    call.response.SetHeader("Access-Control-Expose-Headers", tus::kResponseHeaders);
}

Identity Api::Authorize(Call& call) const {
    std::string token = call.GetBearerToken();
    if (!token.empty()) {
        if (auto identity = sessions.Find(token)) return *identity;
    }
    call.response.SetHeader("WWW-Authenticate", "Bearer");
    throw ApiError(401, "unauthorized", "A valid access token is required.");
}

}  // namespace quilloservice
