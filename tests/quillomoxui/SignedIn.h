#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/threads/MainThread.h"
#include "quillomoxui/model/QuilloNode.h"
#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"
#include "quillosdk/RetryPolicy.h"
#include "tests/support/DrainMainThread.h"
#include "tests/support/FailureLog.h"
#include "tests/support/FakeTus.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/ScriptedService.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillomoxui {

/// The user's directories are the test's own.
class OwnDirectories {
protected:
    OwnDirectories() { moxcore::filesupport::commondirs::SetUserRoot(directory.Text()); }
    testsupport::TemporaryDirectory directory;
};

/// A scripted service that takes uploads by the tus protocol and signs everybody in. The clock and
/// the executor are the test's.
class ServiceTest : public testing::Test,
                    protected OwnDirectories,
                    protected testsupport::ScriptedService {
protected:
    ServiceTest() {
        quillosdk::RetryPolicy::SetRandomSource([] { return 0.5; });
        OnPath("/v1/uploads", [this](auto const& request) { return tus.Answer(request); });
        GrantTokens();
        InitQuilloCppSdk(moxcore::string::AsciiToUTF16("editor"),
                         moxcore::string::AsciiToUTF16("http://127.0.0.1/"));
    }

    ~ServiceTest() override {
        model::QuilloCppSdkIntegration::SignOut();
        quillosdk::RetryPolicy::SetRandomSource(nullptr);
        testsupport::DrainMainThread();
    }

    /// One account with two workspaces, one of which has two projects.
    void ServeTree() {
        using testsupport::Id;
        using testsupport::Record;
        On("GET /v1/me", R"({"user":)" + Record(1, "Jane") + "}");
        On("GET /v1/accounts", R"({"accounts":[)" + Record(2, "Studio") + "]}");
        On("GET /v1/accounts/" + Id(2) + "/workspaces",
           R"({"workspaces":[)" + Record(3, "promos") + "," + Record(4, "Archive") + "]}");
        On("GET /v1/workspaces/" + Id(3) + "/projects",
           R"({"projects":[)" +
               Record(5, "Spot 10",
                      R"(,"root_folder":)" + Record(6, "root", R"(,"type":"folder")")) +
               "," +
               Record(7, "spot 9",
                      R"(,"root_folder":)" + Record(8, "root", R"(,"type":"folder")")) +
               "]}");
        On("GET /v1/workspaces/" + Id(4) + "/projects", R"({"projects":[]})");
    }

    static std::vector<std::string> Names(NodeVector<QuilloNode> const& nodes) {
        std::vector<std::string> names;
        for (auto const& node : nodes)
            names.push_back(moxcore::string::UTF16to8(node->GetName()));
        return names;
    }

    /// Begins to sign in on the sign-in's own thread: what that answers first.
    static std::future<bool> BeginSignIn() {
        struct Answer {
            std::promise<bool> first;
            std::atomic<bool> isGiven{false};
        };
        auto const answer = std::make_shared<Answer>();
        model::QuilloCppSdkIntegration::SignIn([answer](bool loggedIn) {
            if (!answer->isGiven.exchange(true)) answer->first.set_value(loggedIn);
        });
        return answer->first.get_future();
    }

    static bool SignIn() { return BeginSignIn().get(); }

    testsupport::ManualExecutor executor;
    testsupport::FailureLog failures;
    testsupport::FakeTus tus;
};

}  // namespace quillomoxui
