#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <tuple>

#include "service/http/Exchange.h"

namespace quilloservice {

/// Counts and times the requests for Prometheus. Any thread.
class Metrics {
public:
    /// The values at the moment of a scrape.
    struct Gauges {
        std::size_t connections = 0;
        std::int64_t freeBytes = 0;  ///< on the disk of the movies
        bool isStoreReachable = false;
    };

    /// Upper bounds of the histogram's buckets, in seconds.
    static constexpr std::array kBounds = {0.005, 0.01, 0.025, 0.05, 0.1,  0.25,
                                           0.5,   1.0,  2.5,   5.0,  10.0, 30.0};

    void Count(http::Exchange const& exchange, http::Outcome const& outcome);

    /// All figures in Prometheus' text format, version 0.0.4.
    [[nodiscard]] std::string Render(Gauges const& gauges) const;

private:
    struct Times {
        std::array<std::int64_t, kBounds.size()> buckets{};  // not cumulated
        std::int64_t count = 0;
        double seconds = 0;
    };

    mutable std::mutex mutex;
    // Each key is a pattern of a path, not a path, and a method that some route takes, so that
    // clients cannot make the tables grow.
    std::map<std::tuple<std::string, std::string, int>, std::int64_t> requests;  // mutex
    std::map<std::string, Times> times;                                          // by route; mutex
    std::int64_t received = 0;                                                   // mutex
    std::int64_t sent = 0;                                                       // mutex
    std::int64_t cut = 0;                                                        // mutex
};

}  // namespace quilloservice
