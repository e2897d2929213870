#pragma once

#include <string_view>

namespace quillocommon::resources {

/// The style sheet of every page that this project shows in a browser: page.css, as it was built
/// in.
extern std::string_view const kPageCss;

}  // namespace quillocommon::resources
