#pragma once

#include <string>

namespace quilloauth {

// What proves that who asks for the tokens is who began the sign-in (RFC 7636). Any thread.

/// 256 random bits as 43 characters of base64url, fit for a code verifier and for a state.
[[nodiscard]] std::string CreateSecret();

/// The code challenge of `verifier`: its SHA-256 in base64url.
[[nodiscard]] std::string ChallengeOf(std::string const& verifier);

/// Whether both are equal; how long that takes does not tell where they differ.
[[nodiscard]] bool IsSameSecret(std::string const& one, std::string const& other);

}  // namespace quilloauth
