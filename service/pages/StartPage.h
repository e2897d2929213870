#pragma once

#include <string>

/// The page at "/", which explains the service to a visitor.
namespace quilloservice::startpage {

/// The page's Content-Security-Policy.
std::string SecurityPolicy();

/// `showsLocations`: whether the visitor can open /admin, so that the page links to it.
std::string Render(bool showsLocations);

}  // namespace quilloservice::startpage
