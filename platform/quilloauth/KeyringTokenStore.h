#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "quilloauth/TokenStore.h"

namespace quilloauth {

/// Keeps the tokens in the keyring of the user's desktop session, by its Secret Service, in the
/// collection that is the user's default. Nothing here asks the user for anything: a keyring that
/// is locked, or of which there is none yet, is a failure. Waits for the service, up to a deadline,
/// and never on the main thread. One thread at a time.
class KeyringTokenStore final : public TokenStore {
public:
    /// How long a keyring is waited for, which may have to be started first.
    static constexpr std::chrono::milliseconds kPatience{5000};

    /// Keeps the tokens of the application `clientID`. Null, at once, where the session has no bus
    /// on which there could be a keyring: over ssh, in a build farm. Reads the environment.
    [[nodiscard]] static std::unique_ptr<KeyringTokenStore> Create(
        std::string clientID, std::chrono::milliseconds patience = kPatience);
    ~KeyringTokenStore() override;

    // Of the tokens that other collections hold, too, the newest count, and all are forgotten.

    [[nodiscard]] std::optional<Tokens> Load(std::string const& address) override;
    void Save(std::string const& address, Tokens const& tokens) override;
    void Forget(std::string const& address) override;

private:
    KeyringTokenStore(std::string clientID, std::chrono::milliseconds patience);

    std::string const clientID;
    std::chrono::milliseconds const patience;
};

}  // namespace quilloauth
