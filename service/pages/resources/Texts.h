#pragma once

#include <string_view>

/// The files of this folder, and the style sheet that all pages share, as they were built in.
namespace quilloservice::resources {

extern const std::string_view kPageCss;
extern const std::string_view kFormCss;
extern const std::string_view kReviewCss;
extern const std::string_view kAdminCss;
extern const std::string_view kAdminHtml;
extern const std::string_view kAdminJs;

}  // namespace quilloservice::resources
