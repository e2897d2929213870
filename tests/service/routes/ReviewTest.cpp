#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "service/base/Uuid.h"
#include "service/pages/ReviewPage.h"
#include "service/store/ReviewLinks.h"
#include "tests/service/ApiClient.h"
#include "tests/service/RawConnection.h"
#include "tests/service/RunningService.h"

namespace quilloservice {
namespace {

using httplib::Headers;
using nlohmann::json;
using test::ApiClient;
using test::RunningService;
using testing::HasSubstr;
using testing::Not;

class ReviewTest : public testing::Test {
protected:
    std::string Publish(std::string const& content, std::string const& name,
                        std::string const& stack = {}) {
        return client.Upload(content, name, stack)["asset"]["id"];
    }
    std::string Page(std::string const& query = "") {
        auto result = client.http.Get("/r/" + link + query);
        EXPECT_EQ(result->status, 200);
        return result->body;
    }
    httplib::Result Movie(std::string const& asset, Headers const& headers = {}) {
        return client.http.Get("/r/" + link + "/assets/" + asset, headers);
    }

    RunningService service;
    ApiClient client{service.GetPort()};
    std::string link = client.CreateLink("Rough <cut> & \"notes\"");
};

TEST_F(ReviewTest, ShowsTheNewestVersionOfAStack) {
    EXPECT_THAT(Page(), HasSubstr("Nothing to watch yet"));
    EXPECT_EQ(client.http.Get("/r/" + link + "/movie")->status, 404);

    std::string stack = NewUuid();
    std::string first = Publish("first", "v1.mp4", stack);
    client.AddToLink(link, first);
    EXPECT_THAT(Page(), HasSubstr("/assets/" + first + "\""));
    EXPECT_THAT(Page(), Not(HasSubstr("Version"))) << "there is no choice with one version";

    std::string second = Publish("second", "v2.mp4", stack);
    std::string page = Page();
    EXPECT_THAT(page, HasSubstr("src=\"/r/" + link + "/assets/" + second + "\""));
    EXPECT_THAT(page, HasSubstr("href=\"/r/" + link + "?v=" + first));
    EXPECT_THAT(Page("?v=" + first), HasSubstr("src=\"/r/" + link + "/assets/" + first + "\""));
    EXPECT_THAT(Page("?v=junk"), HasSubstr("src=\"/r/" + link + "/assets/" + second + "\""));

    auto newest = client.http.Get("/r/" + link + "/movie");
    EXPECT_EQ(newest->status, 302);
    EXPECT_EQ(newest->get_header_value("Location"), "/r/" + link + "/assets/" + second);
    EXPECT_EQ(Movie(first)->body, "first");
    EXPECT_EQ(Movie(second)->body, "second");
}

TEST_F(ReviewTest, EscapesNamesAndRunsNoScript) {
    client.AddToLink(link, Publish("x", "<script>alert('1')</script>\" onerror=\"x.mp4"));
    auto result = client.http.Get("/r/" + link);
    EXPECT_THAT(result->body,
                HasSubstr("<title>Rough &lt;cut&gt; &amp; &quot;notes&quot;</title>"));
    EXPECT_THAT(result->body, Not(HasSubstr("<script")));
    EXPECT_THAT(result->body, Not(HasSubstr("\" onerror=")));
    EXPECT_THAT(result->body, Not(HasSubstr("http"))) << "nothing is loaded from other sites";

    // The policy allows the page's style sheet and no other.
    std::size_t begin = result->body.find("<style>") + 7;
    std::string style = result->body.substr(begin, result->body.find("</style>") - begin);
    std::string policy = result->get_header_value("Content-Security-Policy");
    EXPECT_THAT(policy, HasSubstr("default-src 'none'"));
    EXPECT_THAT(policy, HasSubstr("style-src '" + [&] {
                    std::string checksum = test::ChecksumOf(style);
                    checksum[checksum.find(' ')] = '-';
                    return checksum;
                }() + "'"));
}

TEST_F(ReviewTest, ShowsOnlyTheLinksMovies) {
    std::string shared = Publish("shared", "a.mp4");
    std::string secret = Publish("secret", "b.mp4");
    client.AddToLink(link, shared);
    std::string otherLink = client.CreateLink("Other");
    client.AddToLink(otherLink, secret);
    for (std::string const& path :
         {"/r/" + link + "/assets/" + secret, "/r/" + otherLink + "/assets/" + shared,
          "/r/" + UuidOf("no link") + "/assets/" + shared, "/r/" + UuidOf("no link"),
          "/r/" + client.project, "/r/" + link.substr(0, 20), std::string("/r/"),
          std::string("/r/%7Bid%7D"), "/r/" + link + "/assets/..%2F..%2Fstore.sqlite",
          "/r/" + link + "/nothing"}) {
        auto result = client.http.Get(path);
        EXPECT_EQ(result->status, 404) << path;
        EXPECT_THAT(result->body, HasSubstr("There is nothing here")) << path;
    }
}

TEST_F(ReviewTest, ServesRanges) {
    std::string content = test::Noise(700'000);
    std::string asset = Publish(content, "movie.mp4");
    client.AddToLink(link, asset);
    auto whole = Movie(asset);
    EXPECT_EQ(whole->body, content);
    EXPECT_EQ(whole->get_header_value("Content-Type"), "video/mp4");
    EXPECT_EQ(whole->get_header_value("Accept-Ranges"), "bytes");
    std::string tag = whole->get_header_value("ETag");

    struct Row {
        Headers headers;
        int status;
        std::string body;
        std::string range;
    };
    for (Row const& row : std::vector<Row>{
             {{{"Range", "bytes=10-19"}}, 206, content.substr(10, 10), "bytes 10-19/700000"},
             {{{"Range", "bytes=300000-"}},
              206,
              content.substr(300'000),
              "bytes 300000-699999/700000"},
             {{{"Range", "bytes=-5"}}, 206, content.substr(699'995), "bytes 699995-699999/700000"},
             {{{"Range", "bytes=0-1,5-6"}}, 200, content, ""},
             {{{"Range", "bytes=0-0"}, {"If-Range", tag}},
              206,
              content.substr(0, 1),
              "bytes 0-0/700000"},
             {{{"Range", "bytes=0-0"}, {"If-Range", "\"other\""}}, 200, content, ""},
             {{{"Range", "pages=1-2"}}, 200, content, ""},
             {{{"Range", "bytes=9-1"}}, 200, content, ""},
             {{{"Range", "bytes=700000-"}, {"If-Range", "\"other\""}}, 200, content, ""},
             {{{"If-Match", tag}, {"Range", "bytes=0-0"}},
              206,
              content.substr(0, 1),
              "bytes 0-0/700000"},
             // httplib reads a response without content up to the end of the connection.
             {{{"If-None-Match", "W/" + tag}, {"Connection", "close"}}, 304, "", ""},
         }) {
        auto result = Movie(asset, row.headers);
        EXPECT_EQ(result->status, row.status) << row.range;
        EXPECT_TRUE(result->body == row.body) << row.range;
        EXPECT_EQ(result->get_header_value("Content-Range"), row.range);
    }
    for (auto [header, value, status] :
         {std::tuple("Range", "bytes=700000-", 416), std::tuple("If-Match", "\"other\"", 412)}) {
        auto refused = Movie(asset, {{header, value}});
        EXPECT_EQ(refused->status, status);
        EXPECT_FALSE(refused->has_header("Cache-Control")) << "errors are not cached";
        EXPECT_FALSE(refused->has_header("ETag"));
    }
    auto past = Movie(asset, {{"Range", "bytes=700000-"}});
    EXPECT_EQ(past->get_header_value("Content-Range"), "bytes */700000");

    auto head = client.http.Head("/r/" + link + "/assets/" + asset);
    EXPECT_EQ(head->status, 200);
    EXPECT_EQ(head->get_header_value("Content-Length"), "700000");
}

TEST_F(ReviewTest, EncodesTheFileNameOfADownload) {
    std::string asset = Publish("x", "Größe\r\nX-Injected: \"1\".mp4");
    client.AddToLink(link, asset);
    test::RawConnection connection(service.GetPort());
    connection.Send("GET /r/" + link + "/assets/" + asset +
                    "?download=1 HTTP/1.1\r\nHost: x\r\n\r\n");
    connection.EndOutput();
    EXPECT_THAT(connection.ReadAll(),
                HasSubstr("Content-Disposition: attachment; filename*=UTF-8''"
                          "Gr%c3%b6%c3%9fe%0d%0aX-Injected%3a%20%221%22.mp4\r\n"));
}

TEST_F(ReviewTest, NeverServesAnUploadAsAPage) {
    httplib::Headers headers{{"Upload-Length", "10"},
                             {"Upload-Metadata", test::Metadata("x.html", client.folder) +
                                                     ",filetype " + test::ToBase64("text/html")}};
    std::string upload = client.Send("POST", "/v1/uploads", headers)->get_header_value("Location");
    client.Append(upload, 0, "<script></s");
    EXPECT_EQ(client.Append(upload, 0, "<script/> ")->status, 204);
    std::string asset = client.Get(upload + "/asset")["asset"]["id"];
    client.AddToLink(link, asset);
    auto movie = Movie(asset);
    EXPECT_EQ(movie->get_header_value("Content-Type"), "application/octet-stream");
    EXPECT_EQ(movie->get_header_value("X-Content-Type-Options"), "nosniff");
    EXPECT_THAT(movie->get_header_value("Content-Security-Policy"), HasSubstr("sandbox"));
}

TEST_F(ReviewTest, UsesTheRequestsHostInUrls) {
    auto urlFor = [&](std::string const& host) {
        auto result = client.Send("POST", "/v1/projects/" + client.project + "/review-links",
                                  {{"Host", host}}, R"({"name":"x"})");
        return json::parse(result->body)["review_link"]["url"].get<std::string>();
    };
    EXPECT_THAT(urlFor("review.example:8080"),
                testing::StartsWith("http://review.example:8080/r/"));
    auto refused = client.Send("POST", "/v1/projects/" + client.project + "/review-links",
                               {{"Host", "evil.example/path?"}}, R"({"name":"x"})");
    EXPECT_EQ(refused->status, 400);
}

TEST_F(ReviewTest, ValidatesRequestsForLinks) {
    std::string links = "/v1/projects/" + client.project + "/review-links";
    std::string assets = "/v1/review-links/" + link + "/assets";
    std::string unknown = UuidOf("nothing");
    json asset = client.Upload("movie")["asset"]["id"];
    struct Row {
        std::string path;
        std::string body;
        int status;
    };
    for (Row const& row : std::vector<Row>{
             {links, "", 400},
             {links, "[]", 400},
             {links, "{\"name\":", 400},
             {links, "{\"name\":\"\xFF\"}", 400},
             {links, R"({"name":""})", 400},
             {links, R"({"name":7})", 400},
             {links, R"({"name":"a\u0000b"})", 400},
             {links, std::string(60'000, '['), 400},
             {links, json{{"name", std::string(70'000, 'x')}}.dump(), 413},
             {"/v1/projects/" + unknown + "/review-links", R"({"name":"x"})", 404},
             {"/v1/review-links/" + unknown + "/assets", R"({"asset_ids":[]})", 404},
             {assets, R"({"asset_ids":"x"})", 400},
             {assets, R"({"asset_ids":[1]})", 400},
             {assets, json{{"asset_ids", {asset, unknown}}}.dump(), 404},
             {assets, json{{"asset_ids", {asset, "../x"}}}.dump(), 404},
             {assets, json{{"asset_ids", {client.folder}}}.dump(), 404},
         }) {
        auto result = client.Send("POST", row.path, {}, row.body);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, row.status) << row.body.substr(0, 80) << result->body;
    }
    // None of the refused requests has added the known asset.
    auto add = [&] {
        return json::parse(
            client.Send("POST", assets, {}, json{{"asset_ids", {asset}}}.dump())->body);
    };
    EXPECT_EQ(add(), (json{{"added", 1}}));
    EXPECT_EQ(add(), (json{{"added", 0}}));
}

}  // namespace
}  // namespace quilloservice
