#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>

#include "quilloauth/TokenStore.h"

namespace quilloauth {

// Tokens as both stores keep them. Any thread.

[[nodiscard]] nlohmann::json ToJson(Tokens const& tokens);

/// None when `entry` is none that ToJson could have made.
[[nodiscard]] std::optional<Tokens> TokensFrom(nlohmann::json const& entry);

}  // namespace quilloauth
