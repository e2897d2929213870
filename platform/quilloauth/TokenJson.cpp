#include "quilloauth/TokenJson.h"

#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>

namespace quilloauth {

nlohmann::json ToJson(Tokens const& tokens) {
    auto const expiry = std::chrono::floor<std::chrono::seconds>(tokens.expiry.time_since_epoch());
    return {{"access_token", tokens.access},
            {"refresh_token", tokens.refresh},
            {"expires_at", expiry.count()}};
}

std::optional<Tokens> TokensFrom(nlohmann::json const& entry) {
    try {
        return Tokens{entry.at("access_token").get<std::string>(),
                      entry.at("refresh_token").get<std::string>(),
                      moxcore::threads::TimePoint(
                          std::chrono::seconds(entry.at("expires_at").get<std::int64_t>()))};
    } catch (nlohmann::json::exception const&) {
        return std::nullopt;
    }
}

}  // namespace quilloauth
