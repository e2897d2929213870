#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "moxcore/threads/Clock.h"
#include "quillocommon/Export.h"

namespace quilloauth {

/// The tokens of a signed-in session. Never to be printed or traced.
struct Tokens {
    std::string access;
    std::string refresh;
    moxcore::threads::TimePoint expiry;  ///< of the access token

    friend bool operator==(Tokens const&, Tokens const&) = default;
};

/// Why a store cannot do what is asked of it, as the end of a sentence: "it is locked". Never holds
/// a token.
class QUILLOSERVICES_API TokenStoreFailure : public std::runtime_error {
public:
    /// `isAbsent`: there is no such store in this session at all.
    explicit TokenStoreFailure(std::string const& why, bool isAbsent = false)
        : runtime_error(why), isAbsent(isAbsent) {}

    bool const isAbsent;
};

/// A place where tokens are kept from one start to the next, one pair for each service. Other
/// processes of the user use it as well, so it is asked anew each time.
class QUILLOSERVICES_API TokenStore {
public:
    TokenStore() = default;
    virtual ~TokenStore() = default;
    TokenStore(TokenStore const&) = delete;
    TokenStore& operator=(TokenStore const&) = delete;

    // Each of them may throw a TokenStoreFailure; then nothing has changed.

    /// The tokens for the service at `address`, if any.
    [[nodiscard]] virtual std::optional<Tokens> Load(std::string const& address) = 0;

    /// Puts `tokens` in place of those for `address`. They are kept once it returns.
    virtual void Save(std::string const& address, Tokens const& tokens) = 0;

    /// Removes those for `address`, if any.
    virtual void Forget(std::string const& address) = 0;
};

}  // namespace quilloauth
