#include "service/Api.h"

#include <httplib.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <thread>

#include "service/ApiError.h"
#include "service/Call.h"
#include "service/Connection.h"
#include "service/Database.h"
#include "service/HttpServer.h"
#include "service/Text.h"
#include "service/Uuid.h"

namespace quilloservice {

namespace {

constexpr std::string_view kEveryPath = R"([\s\S]*)";

bool IsUnder(std::string_view path, std::string_view root) {
    return path.starts_with(root) && (path.size() == root.size() || path[root.size()] == '/');
}

std::string_view NextSegment(std::string_view& path) {
    std::size_t end = path.find('/', 1);
    std::string_view segment = path.substr(0, end);
    path.remove_prefix(segment.size());
    return segment;
}

/// The IDs in `path` when it is one that `pattern` describes.
std::optional<std::vector<std::string>> MatchPath(std::string_view pattern, std::string_view path) {
    std::vector<std::string> ids;
    while (!pattern.empty()) {
        std::string_view expected = NextSegment(pattern);
        if (expected == "/{rest}") return ids;
        std::string_view segment = NextSegment(path);
        if (expected == "/{id}" && segment.size() > 1 && IsUuid(segment.substr(1))) {
            ids.emplace_back(segment.substr(1));
        } else if (expected != segment) {
            return std::nullopt;
        }
    }
    if (!path.empty()) return std::nullopt;
    return ids;
}

/// Throws when it is not certain where the request's body ends.
void CheckFraming(const Call& call) {
    auto length = call.NumberHeader("Content-Length");
    auto encoding = call.Header("Transfer-Encoding");
    if (encoding && (*encoding != "chunked" || length)) {
        throw ApiError::BadRequest("The body's length is not clear from the headers.");
    }
    if (call.Header("Content-Encoding").value_or("identity") != "identity" ||
        call.request.is_multipart_form_data()) {
        throw ApiError::BadRequest("Bodies are taken neither compressed nor in parts.");
    }
}

bool ComesTrue(double probability) {
    if (probability <= 0) return false;
    thread_local std::mt19937_64 random{std::random_device{}()};
    return std::uniform_real_distribution<double>(0, 1)(random) < probability;
}

}  // namespace

Api::Api(HttpServer& server, const Sessions& sessions, std::optional<RateLimit> limit,
         const FaultOptions& faults)
    : sessions_(sessions), limiter_(limit), faults_(faults) {
    std::string every(kEveryPath);
    auto withBody = [this](const httplib::Request& request, httplib::Response& response,
                           const httplib::ContentReader& reader) {
        Call call(request, response, &reader);
        Handle(call);
    };
    auto withoutBody = [this](const httplib::Request& request, httplib::Response& response) {
        Call call(request, response, nullptr);
        Handle(call);
    };
    server.Get(every, withoutBody);
    server.Options(every, withoutBody);
    server.Delete(every, withoutBody);
    server.Post(every, withBody);
    server.Put(every, withBody);
    server.Patch(every, withBody);
    // What httplib refuses by itself, such as a request line that is none.
    server.set_error_handler([](const httplib::Request& request, httplib::Response& response) {
        if (!response.body.empty()) return;
        Call(request, response, nullptr)
            .AnswerError(response.status, "bad_request", "The request cannot be understood.");
    });
}

void Api::Add(Route route) {
    routes_.push_back(std::move(route));
}

void Api::Handle(Call& call) {
    if (faults_.latency.count() > 0) std::this_thread::sleep_for(faults_.latency);
    try {
        CheckFraming(call);
        Dispatch(call);
    } catch (const ApiError& error) {
        call.AnswerError(error.status, error.code, error.what());
    } catch (const DatabaseError& error) {
        std::fprintf(stderr, "quillo-service: %s\n", error.what());
        if (error.IsFull()) {
            ApiError full = ApiError::StorageFull();
            call.AnswerError(full.status, full.code, full.what());
        } else {
            call.AnswerError(500, "internal", "The service's store failed.");
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quillo-service: %s\n", error.what());
        call.AnswerError(500, "internal", "The service failed.");
    }
    call.Settle();
}

void Api::Dispatch(Call& call) {
    const std::string& path = call.request.path;
    std::string method = call.request.method;
    bool restricted = IsUnder(path, "/v1");
    if (restricted && ComesTrue(faults_.failRate)) {
        throw ApiError(500, "internal", "The service was told to fail now and then.");
    }
    // The tus protocol has this for clients that cannot send PATCH.
    if (method == "POST" && IsUnder(path, "/v1/uploads")) {
        method = call.Header("X-HTTP-Method-Override").value_or(method);
    }
    const Route* route = Match(method, path, call.ids);
    if (restricted && !(route && route->open)) call.identity = Authorize(call);
    if (!route) throw ApiError::NotFound("There is nothing at this address.");
    if (route->kind) Count(call, *route->kind);
    route->handler(call);
}

const Api::Route* Api::Match(const std::string& method, const std::string& path,
                             std::vector<std::string>& ids) const {
    for (const Route& route : routes_) {
        if (route.method != method) continue;
        if (auto found = MatchPath(route.path, path)) {
            ids = *std::move(found);
            return &route;
        }
    }
    return method == "HEAD" ? Match("GET", path, ids) : nullptr;
}

Identity Api::Authorize(Call& call) const {
    constexpr std::string_view scheme = "Bearer ";
    std::string header = call.Header("Authorization").value_or("");
    if (header.starts_with(scheme)) {
        if (auto identity = sessions_.Find(std::string_view(header).substr(scheme.size()))) {
            return *identity;
        }
    }
    call.response.set_header("WWW-Authenticate", "Bearer");
    throw ApiError(401, "unauthorized", "This needs an access token that is valid.");
}

void Api::Count(Call& call, RequestKind kind) {
    auto decision = limiter_.Admit(call.identity.session, kind, std::chrono::steady_clock::now());
    call.response.set_header("X-RATELIMIT-LIMIT", std::to_string(decision.limit.requests));
    call.response.set_header("X-RATELIMIT-WINDOW", std::to_string(decision.limit.window.count()));
    if (decision.admitted) return;
    auto wait = std::chrono::ceil<std::chrono::seconds>(decision.retryAfter).count();
    std::string seconds = std::to_string(std::max<std::int64_t>(1, wait));
    call.response.set_header("Retry-After", seconds);
    throw ApiError(429, "rate_limited", "Too many requests; try again in " + seconds + " s.");
}

}  // namespace quilloservice
