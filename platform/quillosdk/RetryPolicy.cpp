#include "quillosdk/RetryPolicy.h"

#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <mutex>
#include <random>
#include <utility>

#include "moxcore/utility/NoDestructor.h"
#include "quillocommon/Saturating.h"
#include "quillosdk/Transport.h"

namespace quillosdk {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kFirstBound{500};
constexpr milliseconds kLargestBound{30'000};
constexpr milliseconds kLongestRetryAfter{120'000};

/// A single wait that is shorter is over before anybody could read of it.
constexpr milliseconds kShortestWaitToTell{1'000};

class RandomSource {
public:
    double Next() {
        std::lock_guard lock(mutex);
        return replacement ? replacement() : std::uniform_real_distribution<>()(engine);
    }

    void Replace(std::function<double()> random) {
        std::lock_guard lock(mutex);
        replacement = std::move(random);
    }

private:
    std::mutex mutex;
    std::minstd_rand engine{std::random_device()()};  // guarded by mutex
    std::function<double()> replacement;              // guarded by mutex
};

/// Never destroyed: requests may fail while the process ends.
RandomSource& TheRandomSource() {
    static moxcore::utility::NoDestructor<RandomSource> source;
    return *source;
}

}  // namespace

RetryPolicy::RetryPolicy(RetryLimits limits) : limits(limits), beginning(moxcore::threads::Now()) {}

std::optional<milliseconds> RetryPolicy::NextDelay(std::optional<milliseconds> retryAfter) {
    if (++failures >= limits.attempts) {
        Answered();
        return std::nullopt;
    }
    int const doublings = std::min(failures - 1, 10);
    milliseconds const bound = std::min(kFirstBound * (1 << doublings), kLargestBound);
    milliseconds const delay =
        retryAfter ? *retryAfter
                   : milliseconds(static_cast<milliseconds::rep>(
                         static_cast<double>(bound.count()) * TheRandomSource().Next()));
    if (moxcore::threads::Now() + delay > beginning + limits.patience) {
        Answered();
        return std::nullopt;
    }
    return delay;
}

void RetryPolicy::Unavailable(milliseconds delay) {
    if (!unavailableSince) unavailableSince = moxcore::threads::Now();
    bool const isNoticed = failures > 1 || delay >= kShortestWaitToTell;
    if (onWait && isNoticed && !std::exchange(isWaitTold, true)) onWait(unavailableSince);
}

void RetryPolicy::Answered() {
    if (std::exchange(isWaitTold, false)) onWait({});
}

void RetryPolicy::Progressed() {
    Answered();
    unavailableSince.reset();
    failures = 0;
    beginning = moxcore::threads::Now();
}

bool RetryPolicy::IsTransient(int status) {
    switch (status) {
        case 408:
        case 429:
        case 500:
        case 502:
        case 503:
        case 504:
            return true;
        default:
            return false;
    }
}

bool RetryPolicy::IsTransientResult(moxcore::config::Result result) {
    return result == kNoConnection || result == kConnectionLost;
}

std::optional<milliseconds> RetryPolicy::ParseRetryAfter(std::string const& value,
                                                         moxcore::threads::TimePoint now) {
    long seconds = 0;
    char const* const end = value.data() + value.size();
    auto const [rest, error] = std::from_chars(value.data(), end, seconds);
    bool const isNumber = rest == end && error != std::errc::invalid_argument;
    if (isNumber) {
        if (value.starts_with('-')) return std::nullopt;
        if (error == std::errc::result_out_of_range) return kLongestRetryAfter;
        return seconds > kLongestRetryAfter / std::chrono::seconds(1)
                   ? kLongestRetryAfter
                   : seconds * milliseconds(1000);
    }
    std::time_t const date = curl_getdate(value.c_str(), nullptr);
    if (date == -1) return std::nullopt;
    auto const wait = std::chrono::ceil<milliseconds>(
        quillocommon::TimeAt(std::chrono::seconds(std::max<std::time_t>(date, 0))) -
        std::max(now, moxcore::threads::TimePoint()));
    return std::clamp(wait, milliseconds(0), kLongestRetryAfter);
}

void RetryPolicy::SetRandomSource(std::function<double()> random) {
    TheRandomSource().Replace(std::move(random));
}

}  // namespace quillosdk
