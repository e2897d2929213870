#include "service/operations/Metrics.h"

#include <algorithm>
#include <chrono>
#include <sstream>

namespace quilloservice {

namespace {

void Describe(std::ostream& text, char const* name, char const* type, char const* help) {
    text << "# HELP " << name << ' ' << help << "\n# TYPE " << name << ' ' << type << '\n';
}

void Add(std::ostream& text, char const* name, char const* type, char const* help,
         std::int64_t value) {
    Describe(text, name, type, help);
    text << name << ' ' << value << '\n';
}

}  // namespace

void Metrics::Count(http::Exchange const& exchange, http::Outcome const& outcome) {
    double const seconds = std::chrono::duration<double>(outcome.took).count();
    auto const bucket = std::lower_bound(kBounds.begin(), kBounds.end(), seconds);
    std::string const route(exchange.route);
    // Without a route the method is the client's own text.
    std::string const method = route.empty() ? std::string() : exchange.request.method;
    std::scoped_lock lock(mutex);
    ++requests[{method, route, exchange.response.status}];
    Times& time = times[route];
    if (bucket != kBounds.end()) ++time.buckets[static_cast<std::size_t>(bucket - kBounds.begin())];
    ++time.count;
    time.seconds += seconds;
    received += outcome.received;
    sent += outcome.sent;
    if (!outcome.isComplete) ++cut;
}

std::string Metrics::Render(Gauges const& gauges) const {
    std::ostringstream text;
    text.precision(12);
    std::scoped_lock lock(mutex);
    Describe(text, "quillo_http_requests_total", "counter", "Requests that have ended.");
    for (auto const& [key, count] : requests) {
        auto const& [method, route, status] = key;
        text << "quillo_http_requests_total{method=\"" << method << "\",route=\"" << route
             << "\",status=\"" << status << "\"} " << count << '\n';
    }
    constexpr char const* kDuration = "quillo_http_request_duration_seconds";
    Describe(text, kDuration, "histogram",
             "From the first byte of a request to the last of its response.");
    for (auto const& [route, time] : times) {
        std::int64_t below = 0;
        for (std::size_t i = 0; i < kBounds.size(); ++i) {
            below += time.buckets[i];
            text << kDuration << "_bucket{route=\"" << route << "\",le=\"" << kBounds[i] << "\"} "
                 << below << '\n';
        }
        text << kDuration << "_bucket{route=\"" << route << "\",le=\"+Inf\"} " << time.count << '\n'
             << kDuration << "_sum{route=\"" << route << "\"} " << time.seconds << '\n'
             << kDuration << "_count{route=\"" << route << "\"} " << time.count << '\n';
    }
    Add(text, "quillo_http_received_bytes_total", "counter", "Bytes of the requests' bodies.",
        received);
    Add(text, "quillo_http_sent_bytes_total", "counter", "Bytes of the responses.", sent);
    Add(text, "quillo_http_cut_total", "counter",
        "Requests whose connection ended before the response did.", cut);
    Add(text, "quillo_http_connections", "gauge", "Open connections, without event streams.",
        static_cast<std::int64_t>(gauges.connections));
    Add(text, "quillo_data_free_bytes", "gauge", "Free space on the disk of the movies.",
        gauges.freeBytes);
    Add(text, "quillo_store_reachable", "gauge", "1 if the records can be read.",
        gauges.isStoreReachable ? 1 : 0);
    return text.str();
}

}  // namespace quilloservice
