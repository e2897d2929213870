#include "service/http/Preconditions.h"

#include <gtest/gtest.h>

namespace quilloservice::http {
namespace {

TEST(PreconditionsTest, ComparesEntityTags) {
    using enum Precondition;
    struct Row {
        char const* header;
        char const* value;
        Precondition expected;
    };
    for (Row const& row : {
             Row{"If-None-Match", "\"a\"", NotModified},
             Row{"if-none-match", "W/\"a\"", NotModified},
             Row{"If-None-Match", "\"b\" , \"a\"", NotModified},
             Row{"If-None-Match", "\"x,y\",\"a\"", NotModified},
             Row{"If-None-Match", "*", NotModified},
             Row{"If-None-Match", "\"b\"", Holds},
             Row{"If-None-Match", "a", Holds},
             Row{"If-Match", "\"a\"", Holds},
             Row{"If-Match", "\"b\", \"a\"", Holds},
             Row{"If-Match", "*", Holds},
             Row{"If-Match", "W/\"a\"", Failed},
             Row{"If-Match", "\"b\"", Failed},
         }) {
        Request request;
        request.headers = {{row.header, row.value}};
        EXPECT_EQ(CheckPreconditions(request, "\"a\""), row.expected)
            << row.header << ": " << row.value;
    }
}

TEST(PreconditionsTest, AppliesARangeOnlyToTheCurrentEntityTag) {
    auto applies = [](char const* method, Fields headers) {
        Request request;
        request.method = method;
        request.headers = std::move(headers);
        return ApplicableRange(request, "\"a\"").has_value();
    };
    EXPECT_TRUE(applies("GET", {{"Range", "bytes=0-"}}));
    EXPECT_TRUE(applies("GET", {{"Range", "bytes=0-"}, {"If-Range", "\"a\""}}));
    EXPECT_FALSE(applies("GET", {{"Range", "bytes=0-"}, {"If-Range", "\"b\""}}));
    EXPECT_FALSE(applies("GET", {{"Range", "bytes=0-"}, {"If-Range", "W/\"a\""}}));
    EXPECT_FALSE(applies("HEAD", {{"Range", "bytes=0-"}}));
}

}  // namespace
}  // namespace quilloservice::http
