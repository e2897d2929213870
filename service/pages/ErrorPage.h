#pragma once

#include <string>
#include <string_view>

/// Error pages for browsers.
namespace quilloservice::errorpage {

/// Whether errors of `path` can be pages; those of the API and the token endpoints are always JSON.
bool IsOffered(std::string_view path);

/// Whether the header Accept prefers HTML to JSON.
bool IsWanted(std::string_view accept);

/// The page's Content-Security-Policy.
std::string SecurityPolicy();

/// Renders the page with the plain text `message` under a heading for the status.
std::string Render(int status, std::string_view message);

}  // namespace quilloservice::errorpage
