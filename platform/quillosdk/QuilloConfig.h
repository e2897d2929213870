#pragma once

#include <string>
#include <utility>

namespace quillosdk {

/// The application that a client serves.
class QuilloConfig {
public:
    explicit QuilloConfig(std::string clientID) : clientID(std::move(clientID)) {}

    /// The application's OAuth client ID.
    [[nodiscard]] std::string const& ClientID() const { return clientID; }

private:
    std::string clientID;
};

}  // namespace quillosdk
