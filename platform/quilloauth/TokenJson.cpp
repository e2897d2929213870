#include "quilloauth/TokenJson.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

#include "quillocommon/Saturating.h"
#include "quillosdk/Redact.h"

namespace quilloauth {
namespace {

/// Anything but a number of seconds counts as long ago: the tokens are renewed then.
moxcore::threads::TimePoint ExpiryIn(nlohmann::json const& entry) {
    auto const& seconds = entry.at("expires_at");
    if (!seconds.is_number_integer()) return {};
    std::uint64_t constexpr kLast = std::numeric_limits<std::int64_t>::max();
    return quillocommon::TimeAt(std::chrono::seconds(
        seconds.is_number_unsigned()
            ? static_cast<std::int64_t>(std::min(seconds.get<std::uint64_t>(), kLast))
            : seconds.get<std::int64_t>()));
}

}  // namespace

nlohmann::json ToJson(Tokens const& tokens) {
    auto const expiry = std::chrono::floor<std::chrono::seconds>(tokens.expiry.time_since_epoch());
    return {{"access_token", tokens.access},
            {"refresh_token", tokens.refresh},
            {"expires_at", expiry.count()}};
}

std::optional<Tokens> TokensFrom(nlohmann::json const& entry) {
    try {
        Tokens tokens{entry.at("access_token").get<std::string>(),
                      entry.at("refresh_token").get<std::string>(), ExpiryIn(entry)};
        bool const usable = quillosdk::IsToken(tokens.access) && quillosdk::IsToken(tokens.refresh);
        return usable ? std::optional(std::move(tokens)) : std::nullopt;
    } catch (nlohmann::json::exception const&) {
        return std::nullopt;
    }
}

}  // namespace quilloauth
