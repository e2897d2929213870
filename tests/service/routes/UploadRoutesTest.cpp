#include <gtest/gtest.h>

#include <algorithm>

#include "service/base/Uuid.h"
#include "tests/service/ApiClient.h"
#include "tests/service/RunningService.h"

namespace quilloservice {
namespace {

using httplib::Headers;
using test::Metadata;

class UploadRoutesTest : public testing::Test {
protected:
    test::RunningService service;
    test::ApiClient client{service.GetPort()};
};

TEST_F(UploadRoutesTest, SetsTusHeaders) {
    auto version = [&](std::string const& method, std::string const& path, Headers const& headers) {
        auto result = client.Send(method, path, headers);
        return std::to_string(result->status) + " " + result->get_header_value("Tus-Resumable");
    };
    std::string upload = client.CreateUpload(10);
    EXPECT_EQ(version("HEAD", upload, {}), "200 1.0.0");
    EXPECT_EQ(version("POST", "/v1/uploads", {}), "400 1.0.0");
    EXPECT_EQ(version("POST", "/v1/uploads", {{"Authorization", ""}}), "401 1.0.0");
    EXPECT_EQ(version("PATCH", upload, {{"Content-Encoding", "gzip"}}), "400 1.0.0");
    EXPECT_EQ(version("GET", "/v1/uploads/x", {}), "404 1.0.0");
    EXPECT_EQ(version("GET", upload, {{"X-HTTP-Method-Override", "HEAD"}}), "200 1.0.0");
    EXPECT_EQ(version("DELETE", upload, {}), "204 1.0.0");
    EXPECT_EQ(version("HEAD", upload, {}), "404 1.0.0");
    EXPECT_EQ(version("OPTIONS", "/v1/uploads", {}), "204 ");
    auto options = client.http.Options("/v1/uploads");
    EXPECT_EQ(options->get_header_value("Tus-Version"), "1.0.0");
    EXPECT_EQ(options->get_header_value("Tus-Extension"),
              "creation,checksum,concatenation,termination");
    EXPECT_EQ(options->get_header_value("Tus-Checksum-Algorithm"), "sha1,sha256,xxh128");
    EXPECT_EQ(options->get_header_value("Tus-Max-Size"), "1099511627776");
}

TEST_F(UploadRoutesTest, ValidatesUploadCreations) {
    std::string folder = client.folder;
    std::string good = Metadata("movie.mp4", folder);
    std::string foreign = UuidOf("account/Somebody Else's Account");
    std::string unknown = UuidOf("nothing");
    struct Row {
        Headers headers;
        int status;
    };
    for (Row const& row : std::vector<Row>{
             {{{"Upload-Length", "10"}, {"Upload-Metadata", good}}, 201},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", good + ",x"}}, 201},
             {{{"Upload-Length", "10"},
               {"Upload-Metadata", Metadata("m", folder, std::string(kNullUuid))}},
              201},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", Metadata("../../etc/x", folder)}}, 201},
             {{{"Upload-Metadata", good}}, 400},
             {{{"Upload-Length", "0"}, {"Upload-Metadata", good}}, 400},
             {{{"Upload-Length", "-1"}, {"Upload-Metadata", good}}, 400},
             {{{"Upload-Length", "1e3"}, {"Upload-Metadata", good}}, 400},
             {{{"Upload-Length", "1099511627777"}, {"Upload-Metadata", good}}, 413},
             {{{"Upload-Length", "9223372036854775808"}, {"Upload-Metadata", good}}, 413},
             {{{"Upload-Length", "10"}, {"Upload-Defer-Length", "1"}, {"Upload-Metadata", good}},
              400},
             {{{"Upload-Length", "10"}}, 400},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", ",,,"}}, 400},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", "filename !!!"}}, 400},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", good + ",filename eA=="}}, 400},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", Metadata("", folder)}}, 400},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", Metadata("\xFF\xFE", folder)}}, 400},
             {{{"Upload-Length", "10"},
               {"Upload-Metadata", Metadata(std::string(1025, 'x'), folder)}},
              400},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", Metadata("m", "../../x")}}, 404},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", Metadata("m", unknown)}}, 404},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", Metadata("m", foreign)}}, 404},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", Metadata("m", folder, "../x")}}, 400},
             {{{"Upload-Length", "10"},
               {"Upload-Metadata", good},
               {"Idempotency-Key", "not a uuid"}},
              400},
             {{{"Upload-Length", "10"}, {"Upload-Metadata", good}, {"Tus-Resumable", "0.2.2"}},
              412},
         }) {
        auto result = client.Send("POST", "/v1/uploads", row.headers);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, row.status) << result->body;
    }
}

TEST_F(UploadRoutesTest, DescribesTheMovieInTheLastAppendsResponse) {
    auto created = client.Send(
        "POST", "/v1/uploads",
        {{"Upload-Length", "4"}, {"Upload-Metadata", Metadata("\xC3\xA9.mp4", client.folder)}});
    std::string upload = created->get_header_value("Location");
    EXPECT_FALSE(client.Append(upload, 0, "mo")->has_header("Quillo-Asset"));
    std::string asset = client.Append(upload, 2, "vi")->get_header_value("Quillo-Asset");
    EXPECT_EQ(nlohmann::json::parse(asset), client.Get(upload + "/asset"));
    EXPECT_TRUE(std::all_of(asset.begin(), asset.end(), [](char c) {
        return c > 0x1F && c < 0x7F;
    })) << asset;
}

TEST_F(UploadRoutesTest, JoinsParts) {
    auto metadata = [](std::string const& id, std::string const& offset) {
        return "whole_id " + test::ToBase64(id) + ",whole_offset " + test::ToBase64(offset) +
               ",whole_length " + test::ToBase64("6");
    };
    auto create = [&](std::string const& length, std::string const& upload) {
        auto result = client.Send(
            "POST", "/v1/uploads",
            {{"Upload-Concat", "partial"}, {"Upload-Length", length}, {"Upload-Metadata", upload}});
        return result->status == 201 ? result->get_header_value("Location")
                                     : std::to_string(result->status);
    };
    std::string whole = NewUuid();
    std::string one = create("2", metadata(whole, "0"));
    std::string other = create("4", metadata(whole, "2"));
    EXPECT_EQ(create("2", metadata("x", "0")), "400");
    EXPECT_EQ(create("2", metadata(whole, "5")), "400") << "beyond the whole";
    EXPECT_EQ(create("2", metadata(whole, "-1")), "400");
    EXPECT_EQ(create("2", metadata(whole, "1")), "409") << "overlaps";
    EXPECT_EQ(client.Send("HEAD", one)->get_header_value("Upload-Concat"), "partial");
    client.Append(other, 0, "vies");
    client.Append(one, 0, "mo");

    auto join = [&](std::string const& concat, Headers more = {}) {
        more.emplace("Upload-Concat", concat);
        more.emplace("Upload-Metadata", Metadata("movie.mp4", client.folder));
        return client.Send("POST", "/v1/uploads", more);
    };
    EXPECT_EQ(join("final;/v1/uploads/x")->status, 400);
    EXPECT_EQ(join("whole")->status, 400);
    EXPECT_EQ(join("final;" + one, {{"Upload-Length", "2"}})->status, 400);
    std::string both = "final;http://elsewhere" + one + " " + other;
    auto joined = join(both);
    EXPECT_EQ(joined->status, 201) << joined->body;
    std::string location = joined->get_header_value("Location");
    EXPECT_EQ(nlohmann::json::parse(joined->body), client.Get(location + "/asset"));
    EXPECT_EQ(client.Get(location + "/asset")["bytes"], 6);
    EXPECT_EQ(join(both)->get_header_value("Location"), location);
    auto head = client.Send("HEAD", location);
    EXPECT_EQ(head->get_header_value("Upload-Concat"), "final;" + one + " " + other);
    EXPECT_EQ(head->get_header_value("Upload-Offset"), "6");
    EXPECT_EQ(client.Send("DELETE", location)->status, 403);
}

TEST_F(UploadRoutesTest, ValidatesAppends) {
    std::string upload = client.CreateUpload(10);
    struct Row {
        Headers headers;
        std::string body;
        int status;
    };
    std::string const type = "application/offset+octet-stream";
    for (Row const& row : std::vector<Row>{
             {{{"Content-Type", "video/mp4"}, {"Upload-Offset", "0"}}, "x", 415},
             {{{"Content-Type", type}}, "x", 400},
             {{{"Content-Type", type}, {"Upload-Offset", "-1"}}, "x", 400},
             {{{"Content-Type", type}, {"Upload-Offset", "99999999999999999999"}}, "x", 409},
             {{{"Content-Type", type}, {"Upload-Offset", "1"}}, "x", 409},
             {{{"Content-Type", type}, {"Upload-Offset", "0"}}, "elevenbytes", 413},
             {{{"Content-Type", type}, {"Upload-Offset", "0"}, {"Upload-Checksum", "md5 eA=="}},
              "x",
              400},
             {{{"Content-Type", type}, {"Upload-Offset", "0"}, {"Upload-Checksum", "sha1 eA=="}},
              "x",
              400},
             {{{"Content-Type", type},
               {"Upload-Offset", "0"},
               {"Upload-Checksum", test::ChecksumOf("y")}},
              "x",
              460},
             {{{"Content-Type", type}, {"Upload-Offset", "0"}, {"Quillo-Content-SHA256", "12"}},
              "x",
              400},
             {{{"Content-Type", type}, {"Upload-Offset", "0"}, {"Content-Encoding", "gzip"}},
              "x",
              400},
             {{{"Content-Type", type},
               {"Upload-Offset", "0"},
               {"Upload-Checksum", "sha1 EfatjsUqKYSrqv18O1FlA3hcIHI="}},
              "x",
              204},
             {{{"Content-Type", type},
               {"Upload-Offset", "1"},
               {"Upload-Checksum", "xxh128 XHQBwOwi7u7q8GxkgLLNEQ=="}},
              "y",
              460},
             {{{"Content-Type", type},
               {"Upload-Offset", "1"},
               {"Upload-Checksum", "xxh128 XHQBwOwi7u7q8GxkgLLNEQ=="}},
              "x",
              204},
         }) {
        auto result = client.Send("PATCH", upload, row.headers, row.body);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, row.status) << row.body << result->body;
    }
    EXPECT_EQ(client.OffsetOf(upload), "2");
    // For clients that cannot send PATCH.
    EXPECT_EQ(client
                  .Send("POST", upload,
                        {{"X-HTTP-Method-Override", "PATCH"},
                         {"Content-Type", type},
                         {"Upload-Offset", "2"}},
                        "yz")
                  ->get_header_value("Upload-Offset"),
              "4");
}

}  // namespace
}  // namespace quilloservice
