#pragma once

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

/// What the first request with this key made, nothing when this is the first. Throws ApiError 409
/// when the key was used for another request.
std::optional<std::string> FindRepeated(Database& database, const IdempotentRequest& request);

/// Keeps what a first request made. In the transaction that makes it.
void RememberResult(Database& database, const IdempotentRequest& request, std::string_view result);

}  // namespace quilloservice
