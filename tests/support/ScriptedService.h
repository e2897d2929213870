#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/ScriptedTransport.h"

namespace testsupport {

/// An identifier that ends in `number`.
[[nodiscard]] inline std::string Id(int number) {
    auto const digits = std::to_string(number);
    return "00000000-0000-0000-0000-" + std::string(12 - digits.size(), '0') + digits;
}

/// A thing as the service tells of it; `more` are further members, each after a comma.
[[nodiscard]] inline std::string Record(int id, std::string const& name,
                                        std::string const& more = {}) {
    return R"({"id":")" + Id(id) + R"(","name":")" + name + "\"" + more + "}";
}

/// A service that answers each request as the test has it, by its line ("GET /v1/me"). A request
/// without an answer waits for the test. Any thread.
class ScriptedService {
public:
    ScriptedService() {
        transport.SetResponder([this](auto const& request) { return Respond(request); });
    }

    void On(std::string const& line, std::string const& body, int status = 200,
            quillosdk::Headers const& headers = {}) {
        std::lock_guard lock(mutex);
        answers[line] = {status, headers, body};
    }

    void Ignore(std::string const& line) {
        std::lock_guard lock(mutex);
        answers.erase(line);
    }

    /// Signs everybody in and out.
    void GrantTokens() {
        On("POST /oauth/token",
           R"({"access_token":"t0ken-of-the-test","token_type":"Bearer","expires_in":999999,)"
           R"("refresh_token":"r3fresh-of-the-test"})");
        On("POST /oauth/revoke", "");
    }

    /// Has `responder` answer the requests whose path begins with `path` and that have no answer of
    /// their own. Before there is any.
    void OnPath(std::string const& path, ScriptedTransport::Responder responder) {
        byPath.emplace(path, std::move(responder));
    }

    /// The lines of the requests so far that begin with `prefix`.
    [[nodiscard]] std::vector<std::string> Requests(std::string const& prefix) const {
        std::vector<std::string> lines;
        for (auto const index : IndicesOf(prefix))
            lines.push_back(transport.LineAt(index));
        return lines;
    }

    /// Their numbers at the transport.
    [[nodiscard]] std::vector<std::size_t> IndicesOf(std::string const& prefix) const {
        std::vector<std::size_t> indices;
        for (std::size_t i = 0; i < transport.Count(); ++i)
            if (transport.LineAt(i).starts_with(prefix)) indices.push_back(i);
        return indices;
    }

    /// The bodies of those requests.
    [[nodiscard]] std::vector<std::string> Bodies(std::string const& prefix) const {
        std::vector<std::string> bodies;
        for (auto const index : IndicesOf(prefix))
            bodies.push_back(*transport.At(index).body);
        return bodies;
    }

    ScriptedTransport transport;

private:
    std::optional<quillosdk::HttpResponse> Respond(quillosdk::HttpRequest const& request) {
        auto const path = request.url.substr(std::string(ScriptedTransport::kAddress).size());
        std::lock_guard lock(mutex);
        auto const found = answers.find(request.method + " " + path);
        if (found != answers.end()) return found->second;
        for (auto const& [beginning, responder] : byPath)
            if (path.starts_with(beginning)) return responder(request);
        return std::nullopt;
    }

    std::mutex mutex;
    std::map<std::string, quillosdk::HttpResponse> answers;  // guarded by mutex
    std::map<std::string, ScriptedTransport::Responder> byPath;
};

}  // namespace testsupport
