#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "moxcore/config/Error.h"
#include "tests/platform/quilloservices/ClientFixture.h"

namespace {

using namespace quillosdk;
using namespace std::chrono_literals;
using moxcore::config::ExtractResultFromException;
using quillocommon::Step;
using testing::HasSubstr;

/// A future of any response, and how it ended.
struct Ended {
    bool failed = false;
    moxcore::config::Result result = 0;
    int status = 0;
    std::string why = {};
};

/// One of the requests: how it is made, what it sends, and an answer that it likes.
struct Request {
    char const* name;
    std::function<std::function<Ended()>(QuilloClient&)> send;  // the result: how it ended
    std::string line;
    std::string goodBody;
    Step step;
    bool retries;
};

template <class F>
std::function<Ended()> Ending(F future) {
    return [future] {
        EXPECT_TRUE(future.IsComplete());
        auto const exception = future.GetException();
        if (exception)
            return Ended{true, ExtractResultFromException(exception), 0,
                         moxcore::config::ExtractMessageFromException(exception)};
        return Ended{false, 0, future.Get()->GetHTTPStatusCode(), future.Get()->GetRefusal()};
    };
}

std::string const kNamed = std::string(R"({"id":")") + kID + R"(","name":"A"})";
std::string const kFolder = std::string(R"({"id":")") + kID + R"(","name":"R","type":"folder"})";

std::vector<Request> AllRequests() {
    std::string const id = kID;
    return {
        {"me", [](QuilloClient& c) { return Ending(c.GetAccounts().GetCurrentUser({})); },
         "GET /v1/me", R"({"user":)" + kNamed + "}", Step::ReadUser, true},
        {"accounts",
         [](QuilloClient& c) { return Ending(c.GetAccounts().GetCurrentUserAccountList({})); },
         "GET /v1/accounts", R"({"accounts":[)" + kNamed + "]}", Step::ReadLocations, true},
        {"workspaces",
         [](QuilloClient& c) {
             return Ending(
                 c.GetWorkspaces().GetWorkspacesByAccount(GetWorkspacesByAccountRequest(kGuid)));
         },
         "GET /v1/accounts/" + id + "/workspaces", R"({"workspaces":[)" + kNamed + "]}",
         Step::ReadLocations, false},
        {"projects",
         [](QuilloClient& c) {
             return Ending(
                 c.GetProjects().GetProjectsByWorkspace(GetProjectsByWorkspaceRequest(kGuid)));
         },
         "GET /v1/workspaces/" + id + "/projects",
         R"({"projects":[{"id":")" + id + R"(","name":"P","root_folder":)" + kFolder + "}]}",
         Step::ReadLocations, false},
        {"children",
         [](QuilloClient& c) {
             return Ending(c.GetAssets().GetChildAssets(GetChildAssetsRequest(kGuid)));
         },
         "GET /v1/folders/" + id + "/children", R"({"assets":[)" + kFolder + "]}",
         Step::ReadLocations, false},
        {"create link",
         [](QuilloClient& c) {
             return Ending(c.GetReviewLinks().CreateReviewLink({kGuid, "L"}));
         },
         "POST /v1/projects/" + id + "/review-links",
         R"({"review_link":{"id":")" + id + R"(","name":"L","url":"http://l"}})",
         Step::CreateReviewLink, true},
        {"add to link",
         [](QuilloClient& c) {
             return Ending(c.GetReviewLinks().AddAssetsToReviewLink({kGuid, {kGuid}}));
         },
         "POST /v1/review-links/" + id + "/assets", R"({"added":1})", Step::AddToReviewLink, true},
    };
}

using RequestsTest = ClientFixture;

TEST_F(RequestsTest, SendTheirLineWithTheTokenAndEndAsTheServiceAnswers) {
    for (auto const& request : AllRequests()) {
        SCOPED_TRACE(request.name);
        auto const at = transport.Count();
        auto const ending = request.send(*client);
        ASSERT_EQ(transport.Count(), at + 1);
        EXPECT_EQ(transport.LineAt(at), request.line);
        EXPECT_EQ(transport.HeaderAt(at, "Authorization"), "Bearer the-first-token-1");
        EXPECT_THAT(transport.HeaderAt(at, "User-Agent"), HasSubstr("editor%201"));
        transport.Answer(at, 200, request.goodBody);
        EXPECT_EQ(ending().status, 200);
        EXPECT_TRUE(NewFailures().empty());
    }
}

TEST_F(RequestsTest, ARefusalIsToldOnceWithTheServicesReasonAndAnAdvice) {
    for (auto const& request : AllRequests()) {
        SCOPED_TRACE(request.name);
        auto const at = transport.Count();
        auto const ending = request.send(*client);
        transport.Answer(
            at, 404, R"({"error":{"code":"not_found","message":"No \u0007 the-first-token-1"}})");
        EXPECT_EQ(transport.Count(), at + 1) << "never repeated";
        bool const failsFuture = request.step == Step::AddToReviewLink;
        EXPECT_EQ(ending().failed, failsFuture);
        EXPECT_EQ(failsFuture ? kRefused : ending().status, failsFuture ? ending().result : 404);
        auto const told = NewFailures();
        ASSERT_EQ(told.size(), 1u);
        EXPECT_EQ(told[0].step, request.step);
        EXPECT_EQ(told[0].httpStatus, 404);
        EXPECT_EQ(told[0].result, kRefused);
        EXPECT_EQ(told[0].message, ending().why);
        EXPECT_THAT(told[0].message, HasSubstr("answered 404 (No   ...); it may have been removed"))
            << "one line, and without the token that was sent";
    }
}

TEST_F(RequestsTest, AreRepeatedForALackOfAnswerButForThoseThatTheirCallerPaces) {
    for (auto const& request : AllRequests()) {
        SCOPED_TRACE(request.name);
        auto const at = transport.Count();
        auto const ending = request.send(*client);
        if (!request.retries) {
            transport.Fail(at, kConnectionLost, "cut");
            EXPECT_EQ(ending().result, kConnectionLost);
            ASSERT_EQ(NewFailures().size(), 1u);

            auto const paced = request.send(*client);
            transport.Answer(at + 1, 429, {}, {{"RETRY-AFTER", "1"}});
            EXPECT_EQ(paced().status, 429);
            EXPECT_TRUE(NewFailures().empty()) << "too many requests are no failure here";
            EXPECT_EQ(executor.AdvanceBy(1h), 0u);
            continue;
        }
        transport.Fail(at, kNoConnection);
        executor.AdvanceBy(250ms);
        transport.Answer(at + 1, 429, {}, {{"RETRY-AFTER", "20"}});
        executor.AdvanceBy(19s);
        EXPECT_EQ(transport.Count(), at + 2);
        executor.AdvanceBy(1s);
        transport.Answer(at + 2, 200, request.goodBody);
        EXPECT_EQ(ending().status, 200);
        EXPECT_TRUE(NewFailures().empty());

        auto const hopeless = request.send(*client);
        for (std::size_t i = at + 3; i < transport.Count(); ++i) {
            transport.Answer(i, 503);
            executor.AdvanceBy(30s);
        }
        EXPECT_EQ(transport.Count(), at + 3 + 8);
        EXPECT_EQ(hopeless().failed ? 503 : hopeless().status, 503);
        EXPECT_EQ(NewFailures().size(), 1u);
    }
}

TEST_F(RequestsTest, ACancellationIsNoFailure) {
    for (auto const& request : AllRequests()) {
        SCOPED_TRACE(request.name);
        auto const at = transport.Count();
        auto const ending = request.send(*client);
        transport.Cancel(at);
        EXPECT_TRUE(ending().failed);
        // A share looks at nothing but whether the addition has failed.
        EXPECT_EQ(ending().result,
                  request.name == std::string("add to link") ? quillosdk::kCalledOff : 0);
        EXPECT_TRUE(NewFailures().empty());
    }
}

TEST_F(RequestsTest, AnAnswerThatCannotBeReadFailsAndSaysWhatIsWrong) {
    struct Row {
        char const* request;
        std::string body;
        char const* says;
    };
    std::string const id = kID;
    std::vector<Row> rows = {
        {"me", R"({"user":{"id":")" + id + R"("}})", "user has no name"},
        {"me", R"({"user":{"id":"me","name":"A"}})", "user.id is no identifier"},
        {"me", R"({"user":[]})", "user is no object"},
        {"me", R"({"person":1})", "it has no user"},
        {"accounts", R"({"accounts":{}})", "accounts is no list"},
        {"accounts", R"({"accounts":[)" + kNamed + R"(,{"name":"B"}]})", "accounts[1] has no id"},
        {"workspaces", R"({"workspaces":[1]})", "workspaces[0] is no object"},
        {"workspaces", R"({"workspaces":[{"id":")" + id + R"(","name":7}]})",
         "workspaces[0].name is no text"},
        {"projects", R"({"projects":[)" + kNamed + "]}", "projects[0] has no root_folder"},
        {"projects", R"({"projects":[{"root_folder":)" + kNamed + "}]}",
         "projects[0].root_folder has no type"},
        {"children", R"({"assets":[)" + kNamed + "]}", "assets[0] has no type"},
        {"children", R"({"assets":[{"id":null}]})", "assets[0].id is no text"},
        {"create link", R"({"review_link":{"url":5}})", "review_link.url is no text"},
    };
    for (auto const& request : AllRequests()) {
        if (request.step == Step::AddToReviewLink) continue;  // nothing of its answer is used
        auto const& good = request.goodBody;
        rows.push_back({request.name, "", "no such JSON"});
        rows.push_back({request.name, "[" + good + "]", "no such JSON"});
        rows.push_back({request.name, good + "x", "no such JSON"});
        rows.push_back({request.name, good + good, "more follows"});
        rows.push_back({request.name, good.substr(0, good.size() - 1) + R"(,"n":")" + "\xFF\"}",
                        "no such JSON"});
        for (std::size_t length = 1; length < good.size(); ++length)
            rows.push_back({request.name, good.substr(0, length), ""});
    }
    std::map<std::string, Request> requests;
    for (auto const& request : AllRequests())
        requests.emplace(request.name, request);

    for (auto const& row : rows) {
        SCOPED_TRACE(std::string(row.request) + ": " + row.body);
        auto const& request = requests.at(row.request);
        auto const at = transport.Count();
        auto const ending = request.send(*client);
        transport.Answer(at, 200, row.body);
        EXPECT_EQ(ending().result, kMalformedAnswer);
        auto const told = NewFailures();
        ASSERT_EQ(told.size(), 1u);
        EXPECT_EQ(told[0].httpStatus, 200);
        EXPECT_EQ(told[0].message, ending().why);
        EXPECT_THAT(told[0].message, HasSubstr(row.says));
    }
}

TEST_F(RequestsTest, RecordsCarryWhatTheServiceTellsWhateverElseItTells) {
    auto const children = client->GetAssets().GetChildAssets(GetChildAssetsRequest(kGuid));
    transport.Answer(0, 200,
                     R"({"page":{"next":[1,{"a":null}]}, "assets": [
        {"size":1e9,"type":"folder","n\u0061me":"Ca\u0066\u00e9 \ud83c\udfac","id":")" +
                         std::string(kID) + R"(","by":{"name":"x"}},
        {"id":"3F2504E0-4F89-41D3-9A0C-0305E82C3302","name":"","type":"hologram"}], "more":false})",
                     {{"X-RATELIMIT-LIMIT", "10"}});
    auto const& assets = children.Get()->GetChildAssetsObject();
    ASSERT_EQ(assets.size(), 2u);
    EXPECT_EQ(assets[0].id, kGuid);
    EXPECT_EQ(assets[0].name, "Caf\u00e9 \U0001F3AC");
    EXPECT_EQ(assets[1].id->AsString(), "3f2504e0-4f89-41d3-9a0c-0305e82c3302");
    EXPECT_EQ(assets[1].type, "hologram");
    EXPECT_EQ(children.Get()->GetHeader().at("X-RATELIMIT-LIMIT"), "10");

    auto const projects =
        client->GetProjects().GetProjectsByWorkspace(GetProjectsByWorkspaceRequest(kGuid));
    transport.Answer(1, 200, AllRequests()[3].goodBody);
    auto const& project = projects.Get()->GetProjectList().at(0);
    EXPECT_EQ(project.name, "P");
    EXPECT_EQ(project.rootAsset.name, "R");
    EXPECT_EQ(project.rootAsset.type, "folder");
}

}  // namespace
