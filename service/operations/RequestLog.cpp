#include "service/operations/RequestLog.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>
#include <utility>

namespace quilloservice {

namespace {

std::string TimestampNow() {
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return FormatTimestamp(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

std::string ToLine(nlohmann::ordered_json const& line) {
    return line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string FormatTimestamp(std::int64_t millisecondsSince1970) {
    auto const seconds = static_cast<std::time_t>(millisecondsSince1970 / 1000);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ",
                  parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour,
                  parts.tm_min, parts.tm_sec, static_cast<int>(millisecondsSince1970 % 1000));
    return text.data();
}

RequestLog::RequestLog(Writer write) : write(std::move(write)), writer([this] { Run(); }) {}

RequestLog::~RequestLog() {
    {
        std::scoped_lock lock(mutex);
        ends = true;
    }
    changed.notify_one();
    writer.join();
}

void RequestLog::Add(http::Exchange const& exchange, http::Outcome const& outcome) {
    double const milliseconds = std::chrono::duration<double, std::milli>(outcome.took).count();
    nlohmann::ordered_json line = {{"time", TimestampNow()},
                                   {"request", exchange.id},
                                   {"method", exchange.request.method},
                                   {"route", exchange.route},
                                   {"status", exchange.response.status},
                                   {"ms", std::round(milliseconds * 10) / 10},
                                   {"received", outcome.received},
                                   {"sent", outcome.sent},
                                   {"from", exchange.request.remoteAddress}};
    if (!outcome.isComplete) line["cut"] = true;
    std::scoped_lock lock(mutex);
    if (waiting.size() >= kMostWaiting) {
        ++dropped;
        return;
    }
    waiting.push_back(ToLine(line));
    changed.notify_one();
}

void RequestLog::Run() {
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return ends || !waiting.empty(); });
        if (waiting.empty()) return;
        std::deque<std::string> const lines = std::exchange(waiting, {});
        std::int64_t const lost = std::exchange(dropped, 0);
        lock.unlock();
        std::string text;
        for (std::string const& line : lines)
            text += line;
        if (lost > 0) text += ToLine({{"time", TimestampNow()}, {"dropped", lost}});
        write(text);
        lock.lock();
    }
}

}  // namespace quilloservice
