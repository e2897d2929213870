#pragma once

#include <string>

namespace quilloauth {

/// A page that the browser shows when it is sent back to this program.
struct ReturnPage {
    int status = 200;
    char const* heading = "";  ///< HTML, as is `text`
    char const* text = "";
};

/// The whole answer, with the headers: a page that may do nothing and load nothing, in the looks of
/// the service's sign-in. Any thread.
[[nodiscard]] std::string RenderAnswer(ReturnPage const& page);

}  // namespace quilloauth
