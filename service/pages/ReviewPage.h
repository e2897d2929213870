#pragma once

#include <string>

namespace quilloservice {

struct ReviewContent;

/// The reviewers' pages: complete HTML documents without scripts, that load nothing but the link's
/// movies.
namespace reviewpage {

/// The value of the Content-Security-Policy header that the pages are to be served with.
std::string SecurityPolicy();

/// The page of a link. `chosenAsset` is the version that is shown in place of the newest one of its
/// movie; empty or unknown: the newest of each.
std::string Render(ReviewContent const& content, std::string const& chosenAsset);

}  // namespace reviewpage

}  // namespace quilloservice
