#include "service/http/ByteRange.h"

#include <gtest/gtest.h>

namespace quilloservice {
namespace {

TEST(ByteRange, FollowsTheStandard) {
    constexpr int kIgnored = -1;
    constexpr int kUnsatisfiable = -2;
    struct Row {
        char const* header;
        std::int64_t first;
        std::int64_t length = 0;
    };
    for (Row const& row : {
             Row{"bytes=0-0", 0, 1},
             Row{"Bytes=2-5", 2, 4},
             Row{"bytes=9-9", 9, 1},
             Row{"bytes=4-", 4, 6},
             Row{"bytes=4-99", 4, 6},
             Row{"bytes=4-9223372036854775807", 4, 6},
             Row{"bytes=-3", 7, 3},
             Row{"bytes=-99", 0, 10},
             Row{"bytes=10-", kUnsatisfiable},
             Row{"bytes=10-20", kUnsatisfiable},
             Row{"bytes=-0", kUnsatisfiable},
             Row{"bytes=5-4", kIgnored},
             Row{"bytes=-", kIgnored},
             Row{"bytes=", kIgnored},
             Row{"bytes=a-b", kIgnored},
             Row{"bytes=1-2x", kIgnored},
             Row{"bytes=x-2", kIgnored},
             Row{"bytes=0-1,3-4", kIgnored},
             Row{"bytes=--5", kIgnored},
             Row{"bytes=99999999999999999999-", kIgnored},
             Row{"lines=0-1", kIgnored},
             Row{"", kIgnored},
         }) {
        RangeRequest range = ParseRange(row.header, 10);
        EXPECT_EQ(range.unsatisfiable, row.first == kUnsatisfiable) << row.header;
        ASSERT_EQ(range.part.has_value(), row.first >= 0) << row.header;
        if (!range.part) continue;
        EXPECT_EQ(range.part->first, row.first) << row.header;
        EXPECT_EQ(range.part->length, row.length) << row.header;
    }
}

}  // namespace
}  // namespace quilloservice
