#include "quillosdk/StreamCount.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "quillosdk/UploadState.h"

namespace {

using namespace quillosdk;
using namespace std::chrono_literals;

constexpr double kMB = 1e6;

/// What a line carries in a second with so many streams.
using LineRate = std::function<double(int streams)>;

/// The counts after each second of sending, as fast as the line takes it.
std::vector<int> CountsOver(LineRate const& line, int seconds) {
    StreamCount count(8);
    StreamCount::Time now{};
    double bytes = 0;
    std::vector<int> counts;
    for (int tick = 0; tick <= seconds * 20; ++tick) {
        count.OnSent(now, static_cast<std::uint64_t>(bytes));
        if (tick > 0 && tick % 20 == 0) counts.push_back(count.Count());
        bytes += line(count.Count()) / 20;
        now += 50ms;
    }
    return counts;
}

TEST(StreamCountTest, FollowsWhatTheLineGives) {
    struct Row {
        char const* name;
        LineRate line;
        std::vector<int> counts;
    };
    for (Row const& row : std::vector<Row>{
             {"a connection fills the line", [](int) { return 60 * kMB; }, {2, 1, 1, 1, 1}},
             {"a connection is held down", [](int n) { return n * 5 * kMB; }, {2, 4, 8, 8, 8}},
             {"three fill it", [](int n) { return std::min(n * 5, 15) * kMB; }, {2, 4, 8, 4, 4}},
             {"a fifth more is not worth it",
              [](int n) { return (n == 1 ? 10 : 12) * kMB; },
              {2, 1, 1, 1, 1}},
             {"nothing moves", [](int) { return 0.0; }, {2, 4, 8, 8, 8}},
         }) {
        EXPECT_EQ(CountsOver(row.line, 5), row.counts) << row.name;
    }
    EXPECT_EQ(CountsOver([](int) { return kMB; }, 30).at(22), 2) << "tries again after a while";
}

TEST(StreamCountTest, FillsTheLineWhileOnlyAnswersAreWaitedFor) {
    StreamCount const count(8);
    struct Row {
        int busy;
        int sending;
        bool mayBegin;
    };
    for (Row const& row : {Row{0, 0, true}, Row{1, 1, false}, Row{1, 0, true}, Row{7, 0, true},
                           Row{7, 1, false}, Row{8, 0, false}})
        EXPECT_EQ(count.MayBegin(row.busy, row.sending), row.mayBegin) << row.busy << row.sending;
}

TEST(StreamCountTest, CutsAFileIntoAFewRangesOfWholePieces) {
    constexpr std::uint64_t kMiB = std::uint64_t{1} << 20;
    for (std::uint64_t size :
         {1 * kMiB, 25 * kMiB, 100 * kMiB + 1, 1024 * kMiB, 50'000 * kMiB, kMiB * kMiB}) {
        for (int streams : {1, 2, 8}) {
            SCOPED_TRACE(std::to_string(size) + " bytes, " + std::to_string(streams));
            std::vector<std::uint64_t> lengths;
            std::uint64_t end = 0;
            while (end < size) {
                lengths.push_back(NextRangeLength(size, end, streams));
                end += lengths.back();
                EXPECT_TRUE(end == size || lengths.back() % kPieceBytes == 0);
                ASSERT_LE(lengths.size(), 160u) << "they have to fit into one header";
            }
            EXPECT_EQ(end, size);
            EXPECT_LE(lengths.back(), kPieceBytes) << "little is left to hash at the end";
            EXPECT_LE(lengths.front(), std::max(size / 8 + kPieceBytes, kPieceBytes));
        }
    }
}

}  // namespace
