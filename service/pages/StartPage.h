#pragma once

#include <string>

/// The page at "/": what this service is, for people who open its address in a browser.
namespace quilloservice::startpage {

/// The value of the Content-Security-Policy header that the page is to be served with.
std::string SecurityPolicy();

/// `showsLocations`: whether the page /admin is shown to this visitor, so that a link may lead
/// there.
std::string Render(bool showsLocations);

}  // namespace quilloservice::startpage
