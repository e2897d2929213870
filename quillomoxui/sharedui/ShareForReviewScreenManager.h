#pragma once

#include <memory>

#include "moxcore/utility/EnableSharedAs.h"
#include "quillomoxui/Export.h"

namespace quillomoxui {

class PopupManager;
class ShareForReviewViewModel;

/// Shows, in one section of a popup, the view that the view model calls for, as long as it lives.
/// Main thread.
class QUILLO_API ShareForReviewScreenManager : public virtual moxcore::utility::EnableSharedAs {
public:
    ~ShareForReviewScreenManager() override;
};

/// Inserts a section before the popup's others and fills it from then on; tells the view model when
/// the user closes the popup. Each call adds one more section. Keep the result as long as the popup
/// is in use. Main thread.
[[nodiscard]] QUILLO_API std::shared_ptr<ShareForReviewScreenManager>
CreateShareForReviewScreenManager(std::shared_ptr<ShareForReviewViewModel> const& viewModel,
                                  std::shared_ptr<PopupManager> const& popupManager);

}  // namespace quillomoxui
