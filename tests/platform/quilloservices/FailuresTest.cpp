#include "quillocommon/Failures.h"

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>
#include <vector>

#include "quillocommon/ServiceAddress.h"

namespace {

using quillocommon::Failure;
using quillocommon::ListenToFailures;
using quillocommon::ReportFailure;
using quillocommon::Step;

Failure const kFailure{Step::Upload, -5, 503, "Could not upload x: try again."};

TEST(Failures, EveryListenerHearsEachFailureUntilItsSubscriptionEnds) {
    std::vector<std::string> heard;
    auto first = ListenToFailures([&](Failure const& f) { heard.push_back("1 " + f.message); });
    auto const thrower = ListenToFailures([](Failure const&) { throw 1; });
    auto const second = ListenToFailures(
        [&](Failure const& f) { heard.push_back("2 " + std::to_string(f.httpStatus)); });
    ReportFailure(kFailure);
    first.reset();
    ReportFailure(kFailure);
    EXPECT_EQ(heard, (std::vector<std::string>{"1 " + kFailure.message, "2 503", "2 503"}));
}

TEST(Failures, EndingASubscriptionWaitsForTheCallUnderWay) {
    std::promise<void> entered;
    std::promise<void> leave;
    bool inListener = false;
    auto subscription = ListenToFailures([&](Failure const&) {
        inListener = true;
        entered.set_value();
        leave.get_future().wait();
        inListener = false;
    });
    std::thread reporter([] { ReportFailure(kFailure); });
    entered.get_future().wait();

    std::thread ender([&] {
        subscription.reset();
        EXPECT_FALSE(inListener);
    });
    leave.set_value();
    ender.join();
    reporter.join();
    ReportFailure(
        kFailure);  // a listener that still heard it would set its promise again, and throw
}

TEST(ServiceAddress, TakesTheOriginOfAServiceAndNothingElse) {
    struct Row {
        char const* url;
        char const* address;  // null: refused
    };
    constexpr Row kRows[] = {
        {"http://127.0.0.1:8080", "http://127.0.0.1:8080"},
        {"https://Quillo.Example///", "https://quillo.example"},
        {"https://quillo.example:443/", "https://quillo.example"},
        {"http://[::1]:80", "http://[::1]"},
        {"", nullptr},
        {"127.0.0.1:8080", nullptr},
        {"ftp://quillo.example", nullptr},
        {"http://quillo.example/api", nullptr},
        {"http://quillo.example?x=1", nullptr},
        {"http://quillo.example#x", nullptr},
        {"http://someone@quillo.example", nullptr},
        {"http://quillo.example:99999", nullptr},
        {"http://quillo.example\r\nX: y", nullptr},
    };
    for (auto const& row : kRows) {
        SCOPED_TRACE(row.url);
        ASSERT_TRUE(quillocommon::SetServiceAddress("http://before.example"));
        EXPECT_EQ(quillocommon::SetServiceAddress(row.url), row.address != nullptr);
        EXPECT_EQ(quillocommon::GetServiceAddress(),
                  row.address ? row.address : "http://before.example");
    }
}

}  // namespace
