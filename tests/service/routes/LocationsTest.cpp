#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "service/base/Uuid.h"
#include "tests/service/ApiClient.h"
#include "tests/service/RunningService.h"

namespace quilloservice {
namespace {

using nlohmann::json;
using test::ApiClient;
using test::RunningService;
using testing::HasSubstr;
using testing::Not;

class LocationsTest : public testing::Test {
protected:
    /// Sends a request; returns the status and, for an error, its code.
    std::string Try(std::string const& method, std::string const& path, json const& body = {}) {
        auto result = client.Send(method, path, {}, body.is_null() ? "" : body.dump());
        std::string text = std::to_string(result->status);
        if (result->status >= 400) {
            text += " " + json::parse(result->body)["error"]["code"].get<std::string>();
        }
        return text;
    }

    std::vector<std::string> NamesIn(std::string const& path, std::string const& key) {
        std::vector<std::string> names;
        json answer = client.Get(path);
        for (json const& item : answer[key])
            names.push_back(item["name"]);
        return names;
    }

    RunningService service;
    ApiClient client{service.GetPort()};
};

TEST_F(LocationsTest, AreCreatedRenamedAndRemoved) {
    std::string account = client.Post("/v1/accounts", {{"name", "A"}})["account"]["id"];
    std::string workspaces = "/v1/accounts/" + account + "/workspaces";
    std::string workspace = client.Post(workspaces, {{"name", "W"}})["workspace"]["id"];
    std::string projects = "/v1/workspaces/" + workspace + "/projects";
    json project = client.Post(projects, {{"name", "P"}})["project"];
    std::string root = project["root_folder"]["id"];
    std::string children = "/v1/folders/" + root + "/children";
    json folder = client.Post(children, {{"name", "F \xF0\x9F\x8E\xAC"}})["asset"];
    EXPECT_EQ(folder["type"], "folder");
    EXPECT_EQ(client.Get(children)["assets"], json::array({folder}));

    std::vector<std::string> paths = {"/v1/folders/" + folder["id"].get<std::string>(),
                                      "/v1/projects/" + project["id"].get<std::string>(),
                                      "/v1/workspaces/" + workspace, "/v1/accounts/" + account};
    for (std::string const& path : paths)
        EXPECT_EQ(Try("PATCH", path, {{"name", "new"}}), "200") << path;
    EXPECT_EQ(NamesIn(children, "assets"), std::vector<std::string>{"new"});
    EXPECT_EQ(client.Get(projects)["projects"][0]["root_folder"]["name"], "new");
    EXPECT_EQ(NamesIn(workspaces, "workspaces"), std::vector<std::string>{"new"});
    EXPECT_EQ(NamesIn("/v1/accounts", "accounts").back(), "new");

    for (auto path = paths.rbegin(); path != paths.rend() - 1; ++path)
        EXPECT_EQ(Try("DELETE", *path), "409 conflict") << *path;
    for (std::string const& path : paths) {
        EXPECT_EQ(Try("DELETE", path), "204") << path;
        EXPECT_EQ(Try("DELETE", path), "404 not_found") << path;
    }
    EXPECT_EQ(NamesIn("/v1/accounts", "accounts").size(), 2u);
}

TEST_F(LocationsTest, AreNotRemovedWithContents) {
    std::string projects = "/v1/workspaces/" +
                           UuidOf(UuidOf("account/Northlight Pictures") + "/Commercials/1") +
                           "/projects";
    std::string root = client.Post(projects, {{"name", "P"}})["project"]["root_folder"]["id"];
    std::string folder =
        client.Post("/v1/folders/" + root + "/children", {{"name", "F"}})["asset"]["id"];
    client.folder = folder;
    std::string upload = client.CreateUpload(5);
    EXPECT_EQ(Try("DELETE", "/v1/folders/" + folder), "409 conflict")
        << "a movie is being uploaded";
    client.Append(upload, 0, "movie");
    EXPECT_EQ(Try("DELETE", "/v1/folders/" + folder), "409 conflict");

    client.project = client.Post(projects, {{"name", "Linked"}})["project"]["id"];
    client.CreateLink();
    EXPECT_EQ(Try("DELETE", "/v1/projects/" + client.project), "409 conflict");
    EXPECT_EQ(Try("DELETE", "/v1/folders/" + root), "409 conflict") << "a project's root folder";
    EXPECT_EQ(Try("PATCH", "/v1/folders/" + root, {{"name", "x"}}), "409 conflict");
}

TEST_F(LocationsTest, ValidateRequests) {
    std::string stranger = UuidOf("account/Somebody Else's Account");
    std::string unknown = UuidOf("nothing");
    struct Row {
        char const* method;
        std::string path;
        json body;
        char const* answer;
    };
    for (Row const& row : std::vector<Row>{
             {"POST", "/v1/accounts", {{"name", ""}}, "400 bad_request"},
             {"POST", "/v1/accounts", {{"name", std::string(1025, 'x')}}, "400 bad_request"},
             {"POST", "/v1/accounts", {{"name", std::string("a\0b", 3)}}, "400 bad_request"},
             {"POST", "/v1/accounts", {{"title", "x"}}, "400 bad_request"},
             {"POST", "/v1/accounts", json::array(), "400 bad_request"},
             {"POST", "/v1/accounts/" + stranger + "/workspaces", {{"name", "x"}}, "403 forbidden"},
             {"POST", "/v1/accounts/" + unknown + "/workspaces", {{"name", "x"}}, "404 not_found"},
             {"POST",
              "/v1/folders/" + client.project + "/children",
              {{"name", "x"}},
              "404 not_found"},
             {"PATCH", "/v1/accounts/" + stranger, {{"name", "x"}}, "403 forbidden"},
             {"PATCH", "/v1/projects/" + client.folder, {{"name", "x"}}, "404 not_found"},
             {"DELETE", "/v1/accounts/" + stranger, {}, "403 forbidden"},
             {"DELETE", "/v1/accounts", {}, "405 method_not_allowed"},
         }) {
        EXPECT_EQ(Try(row.method, row.path, row.body), row.answer) << row.method << row.path;
    }
}

TEST_F(LocationsTest, HaveAnAdminPageForLocalBrowsers) {
    std::string port = ":" + std::to_string(service.GetPort());
    auto page = client.http.Get("/admin");
    ASSERT_EQ(page->status, 200);
    EXPECT_EQ(page->get_header_value("Cache-Control"), "no-store");
    EXPECT_THAT(page->get_header_value("Content-Security-Policy"),
                testing::AllOf(testing::StartsWith("default-src 'none'; style-src 'sha256-"),
                               HasSubstr("script-src 'sha256-"), Not(HasSubstr("unsafe"))));
    // The page is the same each time, so it contains no secret.
    EXPECT_EQ(client.http.Get("/admin")->body, page->body);

    auto named = client.http.Get("/admin", {{"Host", "localhost" + port}});
    EXPECT_EQ(named->status, 302) << "redirect URIs cannot have a name";
    EXPECT_EQ(named->get_header_value("Location"), "http://127.0.0.1" + port + "/admin");

    constexpr char const* kLink = "href=\"/admin\"";
    EXPECT_THAT(client.http.Get("/")->body, HasSubstr(kLink));
    for (httplib::Headers const& headers :
         std::vector<httplib::Headers>{{{"Host", "elsewhere.example"}},
                                       {{"Host", "127.0.0.1.elsewhere.example"}},
                                       {{"Host", "localhost.elsewhere.example"}},
                                       {{"Origin", "http://elsewhere.example"}}}) {
        auto refused = client.http.Get("/admin", headers);
        EXPECT_EQ(refused->status, 403);
        EXPECT_THAT(refused->body, Not(HasSubstr("<script")));
        EXPECT_THAT(client.http.Get("/", headers)->body, Not(HasSubstr(kLink)));
    }
    EXPECT_EQ(client.http.Get("/admin", {{"Host", "127.0.0.2" + port}})->status, 403)
        << "not a valid redirect URI";
}

}  // namespace
}  // namespace quilloservice
