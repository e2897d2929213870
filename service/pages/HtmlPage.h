#pragma once

#include <string>
#include <string_view>

namespace quilloservice::htmlpage {

/// The shared style sheet, followed by a page's `own` rules.
std::string Style(std::string_view own = {});

/// A complete page. `title` is plain text, `style` the result of Style, `body` HTML.
std::string Document(std::string_view title, std::string_view style, std::string_view body);

/// The Content-Security-Policy of a page with this `style`. It forbids everything except the
/// directives `allowed`, separated by semicolons, which must include form-action.
std::string Policy(std::string_view style, std::string_view allowed);

/// The policy's source expression for exactly this inline style or script.
std::string PolicySource(std::string_view source);

}  // namespace quilloservice::htmlpage
