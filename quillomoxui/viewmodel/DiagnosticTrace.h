#pragma once

#include <memory>
#include <sstream>

#include "quillomoxui/properties/UTF16String.h"

namespace quillomoxui {

class QuilloNode;
class ShareForReviewViewModel;

// Text dumps for developers. One thread at a time: they share their indentation.

/// One line for `node` and, indented, one for each node below it that has been fetched.
std::ostringstream& operator<<(std::ostringstream& out, std::shared_ptr<QuilloNode> const& node);

/// The view, the link and the tree of the view model.
std::ostringstream& operator<<(std::ostringstream& out,
                               std::shared_ptr<ShareForReviewViewModel> const& viewModel);

/// `text` in UTF-8, up to its first zero.
std::ostream& operator<<(std::ostream& out, UTF16String const& text);

}  // namespace quillomoxui
