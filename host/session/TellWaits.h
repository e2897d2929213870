#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillohost {

/// Has `tell` say, in one line, when a sign-in or an upload of `viewModel` waits for the service,
/// since when, and that it goes on by itself; and when an upload does go on. As long as the result
/// is kept. Main thread.
[[nodiscard]] std::vector<std::shared_ptr<quillomoxui::BindingHandle>> TellWaits(
    quillomoxui::ShareForReviewViewModel& viewModel,
    std::function<void(std::string const&)> const& tell);

}  // namespace quillohost
