#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quilloservice {

class Database;

/// A creation that its client may repeat without making a second thing: the key the client chose
/// and what it asked for, to tell a repetition from another use of the same key.
struct IdempotentRequest {
    std::string user;
    std::string key;
    std::string request;
};

/// For how long a key counts after its first use.
inline constexpr std::int64_t kKeySeconds = 7 * 24 * 3600;

/// What the first request with this key made, nothing when this is the first for a week. Forgets
/// the keys that count no more at `now`, in seconds since 1970. Throws ApiError 409 when the key
/// was used for another request. In the transaction of the creation.
std::optional<std::string> FindRepeated(Database& database, IdempotentRequest const& request,
                                        std::int64_t now);

/// Keeps what a first request made. In the transaction that makes it, after `FindRepeated`.
void RememberResult(Database& database, IdempotentRequest const& request, std::string_view result,
                    std::int64_t now);

}  // namespace quilloservice
