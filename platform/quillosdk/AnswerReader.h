#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quillosdk/Records.h"

namespace quillosdk {

// Reads the bodies of the service's answers. Members that are not known are passed over. What is
// not JSON, or not what the service should have said, is a ResultException (kMalformedAnswer) that
// says what was wrong and where. A body is given room at its end where it has none, and is not
// changed otherwise. Each thread keeps one parser. Any thread.

/// The asset published from an upload.
struct PublishedAsset {
    Asset asset;
    std::string sha256;  ///< in hexadecimal digits
    std::uint64_t bytes = 0;
};

/// The answer of a token end point.
struct GrantedTokens {
    std::string accessToken;
    std::string refreshToken;
    std::int64_t expiresInSeconds = 0;
};

/// An error's code and message, empty where the body does not tell them.
struct ServiceError {
    std::string code;
    std::string message;
};

/// Has the parser's library make its own statics now, so that they outlive every static object that
/// is made later. Until they are gone answers can be read.
void PrepareToRead();

[[nodiscard]] User ReadUser(std::string& body);
[[nodiscard]] std::vector<Account> ReadAccounts(std::string& body);
[[nodiscard]] std::vector<Workspace> ReadWorkspaces(std::string& body);
[[nodiscard]] std::vector<Project> ReadProjects(std::string& body);
[[nodiscard]] std::vector<Asset> ReadAssets(std::string& body);
[[nodiscard]] ReviewLink ReadReviewLink(std::string& body);
[[nodiscard]] PublishedAsset ReadPublishedAsset(std::string& body);
[[nodiscard]] GrantedTokens ReadGrantedTokens(std::string& body);

/// Reads an error in the service's own form or in that of RFC 6749. Never fails: what is neither
/// has no code and no message.
[[nodiscard]] ServiceError ReadServiceError(std::string& body) noexcept;

}  // namespace quillosdk
