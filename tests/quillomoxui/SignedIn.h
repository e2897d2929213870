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
#include "quillomoxui/model/QuilloFolder.h"
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

    /// Folder 6 holds itself, folder 100 with an endless row of folders, and folder 11, which holds
    /// itself, folder 6, folder 12 and a file with a name of 2,000 characters.
    void ServeEndlessTree() {
        using testsupport::Id;
        auto const folder = [](int id, std::string const& name) {
            return testsupport::Record(id, name, R"(,"type":"folder")");
        };
        auto const serve = [&](int id, std::string const& records) {
            On("GET /v1/folders/" + Id(id) + "/children", R"({"assets":[)" + records + "]}");
        };
        serve(6, folder(6, "itself") + "," + folder(11, "loop") + "," + folder(100, "deep"));
        serve(11, folder(6, "above") + "," + folder(11, "itself") + "," + folder(12, "end") + "," +
                      testsupport::Record(13, std::string(2000, 'x'), R"(,"type":"file")"));
        for (int id = 100; id < 400; ++id)
            serve(id, folder(id + 1, "deeper"));
    }

    /// Holds what a backend makes of it, `root` being folder 6, to what it should be.
    void ExpectAnEndTo(std::shared_ptr<QuilloFolder> const& root) {
        auto const childrenOf = [&](auto const& folder) {
            folder->FetchChildren();
            executor.AdvanceBy(std::chrono::seconds(20));
            return folder->GetChildNodes();
        };
        EXPECT_EQ(Names(childrenOf(root)), (std::vector<std::string>{"deep", "loop"}));
        EXPECT_EQ(Names(childrenOf(root->GetFolders().at(1))),
                  (std::vector<std::string>{std::string(999, 'x') + "\u2026", "end"}));
        ASSERT_EQ(failures.All().size(), 2u);
        EXPECT_NE(failures.All()[1].message.find("2 folders of one list"), std::string::npos);

        std::size_t levels = 6;  // from the user to the folder "deep", both included
        for (auto folder = root->GetFolders().at(0); !childrenOf(folder).empty(); ++levels)
            folder = folder->GetFolders().at(0);
        EXPECT_EQ(levels, 256u);
        ASSERT_EQ(failures.All().size(), 3u);
        for (auto const& failure : failures.All())
            EXPECT_EQ(failure.step, quillocommon::Step::ListLocations);
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
