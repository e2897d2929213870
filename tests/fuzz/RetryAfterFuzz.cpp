// Retry-After. The first line is the time now, in seconds since 1970; the rest is the header's
// value.

#include <array>
#include <charconv>
#include <chrono>
#include <ctime>
#include <optional>
#include <string>

#include "quillosdk/RetryPolicy.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using std::chrono::seconds;

constexpr std::int64_t kLongest = 120;

std::string HttpDate(std::int64_t time) {
    std::array<char, 64> text{};
    std::time_t const when = time;
    std::tm parts{};
    gmtime_r(&when, &parts);
    return {text.data(),
            std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S GMT", &parts)};
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto input = fuzz::AsText(data, size);
    auto const line = fuzz::TakeLine(input);
    std::int64_t now = 0;
    std::from_chars(line.data(), line.data() + line.size(), now);
    if (now < 0 || now > 253'402'300'799) return 0;  // the year 9999
    moxcore::threads::TimePoint const clock{seconds(now)};

    std::string const value(input);
    auto const wait = quillosdk::RetryPolicy::ParseRetryAfter(value, clock);
    if (wait) FUZZ_REQUIRE(*wait >= seconds(0) && *wait <= seconds(kLongest));
    auto const isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (!value.empty() && std::all_of(value.begin(), value.end(), isDigit)) {
        auto const digits = value.substr(std::min(value.find_first_not_of('0'), value.size() - 1));
        auto const wanted =
            digits.size() > 3 ? kLongest : std::min<std::int64_t>(std::stoi(digits), kLongest);
        FUZZ_REQUIRE(wait == seconds(wanted));
    }
    // A date that is as far off as the value is long, either way.
    for (std::int64_t const distance :
         {static_cast<std::int64_t>(size), -static_cast<std::int64_t>(size)}) {
        if (now + distance < 0 || now + distance > 253'402'300'799) continue;
        auto const until = quillosdk::RetryPolicy::ParseRetryAfter(HttpDate(now + distance), clock);
        FUZZ_REQUIRE(until == seconds(std::clamp<std::int64_t>(distance, 0, kLongest)));
    }
    return 0;
}
