#include "bench/line_bench/Rate.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace std::chrono_literals;
using linebench::Rate;
using std::chrono::milliseconds;

constexpr Rate::Time kStart{1000s};

struct Passage {
    milliseconds at;
    std::uint64_t bytes;
    milliseconds passed;
};

struct Case {
    char const* what;
    std::uint64_t bytesPerSecond;
    std::vector<Passage> passages;
};

TEST(RateTest, BytesTakeTheirTimeOneAfterAnother) {
    // The first passage has 5 ms to make up for: nothing passed before it.
    for (auto const& [what, bytesPerSecond, passages] : std::vector<Case>{
             {"no limit", 0, {{0ms, 1 << 30, 0ms}, {1ms, 1 << 30, 1ms}}},
             {"in turns", 1000, {{0ms, 100, 95ms}, {0ms, 50, 145ms}, {10ms, 100, 245ms}}},
             {"a late timer", 1000, {{0ms, 100, 95ms}, {98ms, 100, 195ms}}},
             {"a pause is not saved up", 1000, {{0ms, 100, 95ms}, {500ms, 100, 595ms}}},
             {"few bytes never pass before they come", 1000, {{100ms, 2, 100ms}}},
         }) {
        SCOPED_TRACE(what);
        Rate rate(bytesPerSecond);
        for (auto const& passage : passages)
            EXPECT_EQ(rate.Pass(kStart + passage.at, passage.bytes) - kStart, passage.passed);
    }
}

}  // namespace
