#pragma once

#include <string>

namespace quilloservice::adminpage {

/// What the page may do, for the Content-Security-Policy header.
std::string SecurityPolicy();

/// The page, which asks the service with the access token `token`.
std::string Render(const std::string& token);

/// What is told to whoever the page is not for.
std::string RenderRefused();

}  // namespace quilloservice::adminpage
