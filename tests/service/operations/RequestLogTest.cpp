#include "service/operations/RequestLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <nlohmann/json.hpp>
#include <sstream>

namespace quilloservice {
namespace {

using nlohmann::json;

http::Exchange SomeExchange() {
    http::Exchange exchange;
    exchange.id = "abc";
    exchange.request.method = "GET";
    exchange.request.path = "/r/secret";
    exchange.request.remoteAddress = "192.0.2.1";
    exchange.request.headers = {{"Authorization", "Bearer secret"}};
    exchange.request.parameters = {{"v", "secret"}};
    exchange.route = "/r/{id}";
    exchange.response.status = 206;
    return exchange;
}

TEST(RequestLog, WritesALineForEachRequestWithoutSecrets) {
    std::string text;
    {
        RequestLog log([&](std::string_view lines) { text += lines; });
        log.Add(SomeExchange(), {std::chrono::microseconds(12'345), 6, 789, true});
        log.Add(SomeExchange(), {std::chrono::milliseconds(1), 0, 10, false});
    }
    EXPECT_THAT(text, testing::Not(testing::HasSubstr("secret")));
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    json first = json::parse(line);
    EXPECT_THAT(first["time"].get<std::string>(),
                testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T.*[.][0-9]{3}Z"));
    first.erase("time");
    EXPECT_EQ(first, json::parse(R"({"request": "abc", "method": "GET", "route": "/r/{id}",
                                     "status": 206, "ms": 12.3, "received": 6, "sent": 789,
                                     "from": "192.0.2.1"})"));
    std::getline(lines, line);
    EXPECT_EQ(json::parse(line)["cut"], true);
    EXPECT_FALSE(std::getline(lines, line));
    EXPECT_EQ(FormatTimestamp(1'769'903'999'007), "2026-01-31T23:59:59.007Z");
}

TEST(RequestLog, HoldsUpNobodyWhenItsReaderHasStopped) {
    std::promise<void> writes;
    std::promise<void> goOn;
    std::string text;
    {
        RequestLog log([&, isFirst = true](std::string_view lines) mutable {
            if (std::exchange(isFirst, false)) {
                writes.set_value();
                goOn.get_future().wait();
            }
            text += lines;
        });
        log.Add(SomeExchange(), {});
        writes.get_future().wait();
        for (std::size_t i = 0; i < RequestLog::kMostWaiting + 3; ++i)
            log.Add(SomeExchange(), {});
        goOn.set_value();
    }
    auto const lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    EXPECT_EQ(lines, RequestLog::kMostWaiting + 2);
    EXPECT_EQ(json::parse(text.substr(text.rfind('\n', text.size() - 2) + 1))["dropped"], 3);
}

}  // namespace
}  // namespace quilloservice
