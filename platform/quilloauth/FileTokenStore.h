#pragma once

#include <string>

#include "quilloauth/TokenStore.h"

namespace quilloauth {

/// Keeps the tokens in a file that only its owner may read. It is replaced as a whole: who
/// reads finds the old or the new, never half. A file that cannot be read counts as empty and is
/// replaced by the next Save. Waits for the disk. Any thread.
class FileTokenStore final : public TokenStore {
public:
    /// Keeps the file at `path` (UTF-8); a "<path>.lock" beside it orders the processes.
    explicit FileTokenStore(std::string path);

    /// A file that others may read is closed to them first. Throws nothing.
    [[nodiscard]] std::optional<Tokens> Load(std::string const& address) override;

    void Save(std::string const& address, Tokens const& tokens) override;
    void Forget(std::string const& address) override;

    /// Forgets those for `address` if they are still `tokens`.
    void ForgetIfStill(std::string const& address, Tokens const& tokens);

    /// Forgets those for `address`, and leaves a mark in their place: a sign-out that another store
    /// has not carried out yet. Save and Forget remove it.
    void MarkSignedOut(std::string const& address);
    [[nodiscard]] bool IsMarkedSignedOut(std::string const& address);

private:
    std::string const path;
};

}  // namespace quilloauth
