#pragma once

#include <string_view>

/// The files of this folder and the shared style sheet, embedded at build time.
namespace quilloservice::resources {

extern std::string_view const kPageCss;
extern std::string_view const kFormCss;
extern std::string_view const kReviewCss;
extern std::string_view const kAdminCss;
extern std::string_view const kAdminHtml;
extern std::string_view const kAdminJs;

}  // namespace quilloservice::resources
