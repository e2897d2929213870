#pragma once

#include <string>

#include "service/store/Ids.h"

namespace quilloservice {

struct ReviewContent;

/// The reviewers' page: an HTML document without scripts that loads nothing but the link's movies.
namespace reviewpage {

/// The page's Content-Security-Policy.
std::string SecurityPolicy();

/// Renders the page of a link. It shows each movie's newest version, or `chosen` if that is one of
/// its versions.
std::string Render(ReviewContent const& content, FileId const& chosen);

}  // namespace reviewpage

}  // namespace quilloservice
