#include "quillocommon/Failures.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "moxcore/async/CancelledException.h"
#include "moxcore/config/Error.h"
#include "moxcore/threads/MainThread.h"
#include "quillocommon/ServiceAddress.h"
#include "tests/support/DrainMainThread.h"
#include "tests/support/FailureLog.h"
#include "tests/support/TraceLog.h"

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

TEST(Failures, WhatHandlersThrowIsAWarningAndIsTraced) {
    using moxcore::config::kUnknownFailure;
    struct Row {
        std::exception_ptr thrown;
        std::int32_t result;
        char const* text;
    };
    testsupport::FailureLog failures;
    testsupport::TraceLog traced(1);
    for (auto const& [thrown, result, text] :
         {Row{std::make_exception_ptr(std::runtime_error("broken")), kUnknownFailure, "broken"},
          Row{std::make_exception_ptr(moxcore::config::ResultException(-7, "refused")), -7,
              "refused"},
          Row{std::make_exception_ptr(moxcore::async::CancelledException()), kUnknownFailure,
              "cancelled"},
          Row{std::make_exception_ptr(1), kUnknownFailure, "unknown"}}) {
        SCOPED_TRACE(text);
        auto const before = failures.All().size();
        moxcore::threads::MainThread::ReportFailure(thrown);
        testsupport::DrainMainThread();
        auto const told = failures.All();
        ASSERT_EQ(told.size(), before + 1);
        EXPECT_EQ(told.back().step, Step::HandleEvent);
        EXPECT_TRUE(IsWarning(told.back().step));
        EXPECT_EQ(told.back().result, result);
        EXPECT_NE(told.back().message.find(text), std::string::npos) << told.back().message;
        EXPECT_EQ(traced.Take(), std::vector{told.back().message});
    }
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
        {"https://quillo.example/api", nullptr},
        {"https://quillo.example?x=1", nullptr},
        {"https://quillo.example#x", nullptr},
        {"https://someone@quillo.example", nullptr},
        {"https://quillo.example:99999", nullptr},
        {"https://quillo.example\r\nX: y", nullptr},
    };
    for (auto const& row : kRows) {
        SCOPED_TRACE(row.url);
        ASSERT_TRUE(quillocommon::SetServiceAddress("https://before.example"));
        EXPECT_EQ(quillocommon::SetServiceAddress(row.url), row.address != nullptr);
        EXPECT_EQ(quillocommon::GetServiceAddress(),
                  row.address ? row.address : "https://before.example");
    }
}

/// Ends the process, well when `wrong` is empty.
[[noreturn]] void EndWith(std::string const& wrong) {
    std::cerr << wrong << std::flush;
    std::_Exit(wrong.empty() ? 0 : 1);
}

constexpr char const* kOtherMachines[] = {"http://review.example",
                                          "http://127.evil.example",
                                          "http://127.0.0.1.evil.example",
                                          "http://localhost.evil.example/",
                                          "http://10.0.0.1",
                                          "http://0.0.0.0",
                                          "http://[::2]:8080"};

TEST(ServiceAddress, PlainHttpIsForThisMachine) {
    for (char const* url :
         {"http://127.0.0.1:1", "http://127.255.3.4", "http://127.1", "http://LOCALHOST:8080",
          "http://[0:0:0:0:0:0:0:1]:1", "http://[::1]:80"}) {
        SCOPED_TRACE(url);
        EXPECT_FALSE(quillocommon::IsInsecureServiceAddress(url));
        EXPECT_TRUE(quillocommon::SetServiceAddress(url));
    }
    EXPECT_FALSE(quillocommon::IsInsecureServiceAddress("ftp://quillo.example"));
    for (char const* url : kOtherMachines) {
        SCOPED_TRACE(url);
        EXPECT_TRUE(quillocommon::IsInsecureServiceAddress(url));
        EXPECT_FALSE(quillocommon::SetServiceAddress(url));
        EXPECT_EQ(quillocommon::GetServiceAddress(), "http://[::1]");
    }
}

TEST(ServiceAddress, OtherPlainHttpHasToBeAllowedAndIsWarnedOfOnce) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // what is allowed stays so for the process
    auto const takeThemAll = [] {
        std::string wrong;
        std::vector<Failure> told;
        auto const subscription =
            ListenToFailures([&](auto const& failure) { told.push_back(failure); });
        quillocommon::AllowInsecureHttp();
        for (char const* url : kOtherMachines)
            if (!quillocommon::SetServiceAddress(url)) wrong.append(url).append(" is refused; ");
        if (told.size() != 1) return wrong + std::to_string(told.size()) + " warnings";
        if (!IsWarning(told[0].step)) wrong += "it is no warning; ";
        if (told[0].message.find("http://review.example") == std::string::npos) wrong += "of what?";
        return wrong;
    };
    EXPECT_EXIT(EndWith(takeThemAll()), testing::ExitedWithCode(0), "^$");
}

TEST(ServiceAddress, ThatOfTheEnvironmentIsHeldToTheSameRule) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // it is read once
    auto const addressOf = [](bool isAllowed) {
        setenv("QUILLO_SERVICE_URL", "http://review.example", 1);
        if (isAllowed) quillocommon::AllowInsecureHttp();
        return quillocommon::GetServiceAddress();
    };
    EXPECT_EXIT(EndWith(addressOf(false)), testing::ExitedWithCode(0), "^$");
    EXPECT_EXIT(EndWith(addressOf(true)), testing::ExitedWithCode(1), "^http://review.example$");
}

}  // namespace
