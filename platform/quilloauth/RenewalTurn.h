#pragma once

#include <memory>
#include <string>

namespace quilloauth {

/// The turn to renew the tokens that several processes of the user share. A refresh token is good
/// once: two that used the same one would end the session for both. The turn ends with this object,
/// or with the process.
class RenewalTurn {
public:
    virtual ~RenewalTurn() = default;

    /// The turn for the tokens kept at `tokenPath` (UTF-8); null while somebody else has it. Where
    /// locking is not to be had everybody has a turn. Does not wait. Any thread.
    [[nodiscard]] static std::unique_ptr<RenewalTurn> TryTake(std::string const& tokenPath);
};

}  // namespace quilloauth
