#include "host/process/SlidingRate.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace quillohost {
namespace {

using namespace std::chrono_literals;

TEST(SlidingRate, IsThatOfTheLastTenSeconds) {
    struct Row {
        char const* name;
        std::vector<std::pair<std::chrono::milliseconds, double>> samples;
        std::optional<double> perSecond;
    };
    for (Row const& row : std::vector<Row>{
             {"nothing", {}, {}},
             {"a beginning", {{0ms, 0}, {999ms, 0.1}}, {}},
             {"a second", {{0ms, 0}, {1s, 0.125}}, 0.125},
             {"nothing done", {{0ms, 0}, {5s, 0}}, {}},
             {"faster now", {{0ms, 0}, {20s, 0.25}, {30s, 0.75}}, 0.05},
             {"slower now", {{0ms, 0}, {1s, 0.5}, {11s, 0.625}}, 0.0125},
             {"a pause", {{0ms, 0}, {5s, 0.5}, {15s, 0.5}, {20s, 0.625}}, 0.125 / 15},
             {"close together", {{0ms, 0}, {950ms, 0.1}, {990ms, 0.2}, {1s, 0.25}}, 0.25},
         }) {
        SlidingRate rate;
        for (auto const& [time, fraction] : row.samples)
            rate.Add(SlidingRate::Time(time), fraction);
        ASSERT_EQ(rate.PerSecond().has_value(), row.perSecond.has_value()) << row.name;
        if (row.perSecond) {
            EXPECT_DOUBLE_EQ(*rate.PerSecond(), *row.perSecond) << row.name;
        }
    }
}

}  // namespace
}  // namespace quillohost
