#pragma once

#include <string>
#include <string_view>

namespace quilloservice::htmlpage {

/// The style sheet that all pages share, with a page's `own` rules behind it.
std::string Style(std::string_view own = {});

/// A whole page: `title` is text, `style` what Style has made, `body` HTML.
std::string Document(std::string_view title, std::string_view style, std::string_view body);

/// The value of the Content-Security-Policy header of a page with this `style`, which may do
/// nothing else but what the directives `allowed` say; separated by semicolons, form-action among
/// them.
std::string Policy(std::string_view style, std::string_view allowed);

/// The source expression with which a policy lets exactly this inline style or script through.
std::string PolicySource(std::string_view source);

}  // namespace quilloservice::htmlpage
