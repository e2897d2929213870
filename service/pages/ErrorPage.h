#pragma once

#include <string>
#include <string_view>

/// Errors as people see them in a browser.
namespace quilloservice::errorpage {

/// Whether browsers ask for `path` as well as programs, so that there is a choice.
bool IsOffered(std::string_view path);

/// Whether a client that sends the header `accept`, a list of media ranges, prefers the page to
/// JSON.
bool IsWanted(std::string_view accept);

/// The value of the Content-Security-Policy header that the page is to be served with.
std::string SecurityPolicy();

/// The page that says `message`, text, under a heading for the status.
std::string Render(int status, std::string_view message);

}  // namespace quilloservice::errorpage
