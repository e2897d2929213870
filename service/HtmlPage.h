#pragma once

#include <string>
#include <string_view>

namespace quilloservice::htmlpage {

/// A whole page: `title` is text, `style` CSS, `body` HTML.
std::string Document(std::string_view title, std::string_view style, std::string_view body);

/// The source expression with which a Content-Security-Policy lets exactly this inline style or
/// script through.
std::string PolicySource(std::string_view source);

}  // namespace quilloservice::htmlpage
