#pragma once

#include <string>

/// The page /admin, on which a developer browses and edits a user's locations. Its script signs in
/// like any other client; the page itself is the same for everyone and contains no secret.
namespace quilloservice::adminpage {

/// The page's Content-Security-Policy.
std::string SecurityPolicy();

std::string Render();

}  // namespace quilloservice::adminpage
