#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/threads/MainThread.h"
#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"
#include "quillosdk/RetryPolicy.h"
#include "tests/support/DrainMainThread.h"
#include "tests/support/FailureLog.h"
#include "tests/support/FakeTus.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillomoxui {

/// The user's directories are the test's own.
class OwnDirectories {
protected:
    OwnDirectories() { moxcore::filesupport::commondirs::SetUserRoot(directory.Text()); }
    testsupport::TemporaryDirectory directory;
};

/// A service that answers each request as the test has it: by its line ("GET /v1/me"), uploads by
/// the tus protocol. A request without an answer waits for the test. The clock and the executor are
/// the test's.
class ServiceTest : public testing::Test, protected OwnDirectories {
protected:
    ServiceTest() {
        quillosdk::RetryPolicy::SetRandomSource([] { return 0.5; });
        transport.SetResponder([this](auto const& request) { return Respond(request); });
        On("POST /oauth/token",
           R"({"access_token":"t0ken","token_type":"Bearer","expires_in":999999,)"
           R"("refresh_token":"r3fresh"})");
        On("POST /oauth/revoke", "");
        InitQuilloCppSdk(moxcore::string::AsciiToUTF16("editor"),
                         moxcore::string::AsciiToUTF16("http://127.0.0.1/"));
    }

    ~ServiceTest() override {
        model::QuilloCppSdkIntegration::SignOut();
        quillosdk::RetryPolicy::SetRandomSource(nullptr);
        testsupport::DrainMainThread();
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

    /// Signs in on the sign-in's own thread and waits for what that answers.
    static bool SignIn() {
        struct Answer {
            std::promise<bool> first;
            std::atomic<bool> isGiven{false};
        };
        auto const answer = std::make_shared<Answer>();
        model::QuilloCppSdkIntegration::SignIn([answer](bool loggedIn) {
            if (!answer->isGiven.exchange(true)) answer->first.set_value(loggedIn);
        });
        return answer->first.get_future().get();
    }

    /// The lines of the requests so far that begin with `prefix`.
    [[nodiscard]] std::vector<std::string> Requests(std::string const& prefix) const {
        std::vector<std::string> lines;
        for (std::size_t i = 0; i < transport.Count(); ++i)
            if (auto line = transport.LineAt(i); line.starts_with(prefix))
                lines.push_back(std::move(line));
        return lines;
    }

    testsupport::ManualExecutor executor;
    testsupport::ScriptedTransport transport;
    testsupport::FailureLog failures;
    testsupport::FakeTus tus;

private:
    std::optional<quillosdk::HttpResponse> Respond(quillosdk::HttpRequest const& request) {
        auto const path =
            request.url.substr(std::string(testsupport::ScriptedTransport::kAddress).size());
        std::lock_guard lock(mutex);
        auto const found = answers.find(request.method + " " + path);
        if (found != answers.end()) return found->second;
        if (path.starts_with("/v1/uploads")) return tus.Answer(request);
        return std::nullopt;
    }

    std::mutex mutex;
    std::map<std::string, quillosdk::HttpResponse> answers;  // guarded by mutex
};

}  // namespace quillomoxui
