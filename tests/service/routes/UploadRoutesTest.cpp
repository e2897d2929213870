#include <gtest/gtest.h>

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
    EXPECT_EQ(version("DELETE", upload, {}), "405 1.0.0");
    EXPECT_EQ(version("GET", "/v1/uploads/x", {}), "404 1.0.0");
    EXPECT_EQ(version("GET", upload, {{"X-HTTP-Method-Override", "HEAD"}}), "200 1.0.0");
    EXPECT_EQ(version("OPTIONS", "/v1/uploads", {}), "204 ");
    auto options = client.http.Options("/v1/uploads");
    EXPECT_EQ(options->get_header_value("Tus-Version"), "1.0.0");
    EXPECT_EQ(options->get_header_value("Tus-Extension"), "creation,checksum");
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
