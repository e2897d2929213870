#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "moxcore/utility/Descriptor.h"

namespace quilloservice {

/// The secret by which a program proves that it runs as the user who started the service. It is new
/// at each start and lies in a file that only this user can read. Programs derive the file's path
/// from the service's address: $XDG_RUNTIME_DIR/quillo/PORT/ADDRESS.secret, or below ~/.cache if
/// that directory is missing or not private. The destructor removes the file. Any thread.
class LocalUserSecret {
public:
    /// Writes the file for a service that listens on `host` and `port`. If no loopback address
    /// leads there, writes none and accepts no claim. Throws std::runtime_error if there is no
    /// private directory for the file.
    LocalUserSecret(std::string const& host, int port);
    ~LocalUserSecret();
    LocalUserSecret(LocalUserSecret const&) = delete;
    LocalUserSecret& operator=(LocalUserSecret const&) = delete;

    /// Compares `claim` with the secret, in constant time.
    [[nodiscard]] bool Is(std::string_view claim) const;

private:
    void OpenDirectory();
    void Write(std::string const& address);

    std::string secret;
    std::string port;
    moxcore::utility::Descriptor parent;
    moxcore::utility::Descriptor directory;  ///< in `parent`, called `port`
    std::vector<std::pair<std::string, moxcore::utility::Descriptor>>
        files;  ///< in `directory`, with their names
};

}  // namespace quilloservice
