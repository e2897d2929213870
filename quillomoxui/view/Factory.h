#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <memory>

#include "quillomoxui/properties/ShareForReviewViewID.h"

namespace quillomoxui {
class ShareForReviewViewModel;
}
namespace quillomoxui::view {
class PopupBaseView;
}

namespace quillomoxui::view::factory {

/// A new view of `viewModel` (not null) for `id`; null for an ID that has no view. Main thread.
[[nodiscard]] boost::intrusive_ptr<PopupBaseView> CreateView(
    ShareForReviewViewID id, std::shared_ptr<ShareForReviewViewModel> const& viewModel);

}  // namespace quillomoxui::view::factory
