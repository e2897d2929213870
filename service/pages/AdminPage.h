#pragma once

#include <string>

/// The page on which a developer sees and changes the locations of a user. It signs in as any
/// program does, by its own script: what the service sends is the same for everybody and holds no
/// secret.
namespace quilloservice::adminpage {

/// What the page may do, for the Content-Security-Policy header.
std::string SecurityPolicy();

std::string Render();

}  // namespace quilloservice::adminpage
