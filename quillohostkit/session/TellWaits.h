#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quillohostkit/Export.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillohostkit {

/// Has `tell` say, in one line, when a sign-in of `viewModel` waits for the user in the
/// browser; when it or an upload waits for the service, since when, and that it goes on by itself;
/// and when an upload does go on. As long as the result is kept. Main thread.
[[nodiscard]] QUILLOHOSTKIT_API std::vector<std::shared_ptr<quillomoxui::BindingHandle>> TellWaits(
    quillomoxui::ShareForReviewViewModel& viewModel,
    std::function<void(std::string const&)> const& tell);

}  // namespace quillohostkit
