#pragma once

#include <cstdint>

namespace quilloauth::jwt {

// Results of a sign-in, as functions of AuthManager.h answer them and failures report them
// (quillocommon/Failures.h).

/// What Login answers when a session exists and GetAccessToken will give its token.
inline constexpr std::int32_t kSessionExists = static_cast<std::int32_t>(0xBB590001);

/// What GetAccessToken fails with and Login answers when nobody is signed in and nothing here can
/// change it.
inline constexpr std::int32_t kNotSignedIn = static_cast<std::int32_t>(0xBB590002);

/// What GetAccessToken fails with when the session that was kept turns out to have been ended by
/// the service: it is forgotten, and a Login begins another.
inline constexpr std::int32_t kSessionOver = static_cast<std::int32_t>(0xBB590003);

}  // namespace quilloauth::jwt
