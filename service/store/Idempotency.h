#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "service/store/Ids.h"

namespace quilloservice {

class Database;

/// A creation that the client may repeat without creating a second object.
struct IdempotentRequest {
    UserId user;
    IdempotencyKey key;
    std::string request;  ///< the contents, to tell a repetition from reuse of the key
};

/// How long a key is valid after its first use.
inline constexpr std::int64_t kKeySeconds = 7 * 24 * 3600;

// Implementation of the templates below, with the text of the ID.
std::optional<std::string> FindRepeatedText(Database& database, IdempotentRequest const& request,
                                            std::int64_t now);
void RememberResultText(Database& database, IdempotentRequest const& request,
                        std::string const& result, std::int64_t now);

/// The ID of the object that the first request with this key created; nothing if this is the first.
/// Deletes the keys that have expired at `now`, in seconds since 1970. Throws ApiError 409 if the
/// key was used for another request. Call in the transaction of the creation.
template <typename Made>
std::optional<Made> FindRepeated(Database& database, IdempotentRequest const& request,
                                 std::int64_t now) {
    auto made = FindRepeatedText(database, request, now);
    return made ? std::optional(Made(*std::move(made))) : std::nullopt;
}

/// Stores the ID of the object that a first request created. Call in the transaction of the
/// creation, after FindRepeated.
template <typename Made>
void RememberResult(Database& database, IdempotentRequest const& request, Made const& made,
                    std::int64_t now) {
    RememberResultText(database, request, made.GetText(), now);
}

}  // namespace quilloservice
