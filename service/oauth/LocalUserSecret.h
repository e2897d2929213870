#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "service/base/Descriptor.h"

namespace quilloservice {

/// What a program proves with that it runs as the user who has started the service: a secret, made
/// anew each time, in a file that only this user can read. Programs find it by the service's
/// address: $XDG_RUNTIME_DIR/quillo/PORT/ADDRESS.secret, or below ~/.cache when that directory is
/// not to be had. The file goes away with this object. Any thread.
class LocalUserSecret {
public:
    /// Writes the file for a service that listens on `host` and `port`; none when no loopback
    /// address leads there, for then no claim is ever good. Throws std::runtime_error when there is
    /// no place that is the user's alone.
    LocalUserSecret(std::string const& host, int port);
    ~LocalUserSecret();
    LocalUserSecret(LocalUserSecret const&) = delete;
    LocalUserSecret& operator=(LocalUserSecret const&) = delete;

    /// Whether `claim` is the secret; how long that takes does not tell how much of it is right.
    [[nodiscard]] bool Is(std::string_view claim) const;

private:
    void OpenDirectory();
    void Write(std::string const& address);

    std::string secret;
    std::string port;
    Descriptor parent;
    Descriptor directory;                                   ///< in `parent`, called `port`
    std::vector<std::pair<std::string, Descriptor>> files;  ///< in `directory`, by their names
};

}  // namespace quilloservice
