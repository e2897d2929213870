#pragma once

#include <memory>

#include "moxcore/utility/EnableSharedAs.h"
#include "quillomoxui/Export.h"

namespace quillomoxui {

class PopupManager;
class ShareForReviewViewModel;

/// Shows, in one section of a popup, the view that the view model calls for, as long as it lives.
/// It opens the popup's window with the first view, so that StartShareForReviewPopup shows it, and
/// closes it with ShareForReviewViewID::None.
///
/// Some controls of the views do nothing as yet: the presets of the review form, Cancel in the
/// progress view, the entries of the menu "More", and the settings of the link. A host that lets an
/// export be cancelled offers that itself. Main thread.
class QUILLO_API ShareForReviewScreenManager : public virtual moxcore::utility::EnableSharedAs {
public:
    ~ShareForReviewScreenManager() override;
};

/// Inserts a section before the popup's others and fills it from then on; notifies the view model
/// when the user closes the popup. Each call adds one more section. Keep the result as long as the
/// popup is in use. Main thread.
[[nodiscard]] QUILLO_API std::shared_ptr<ShareForReviewScreenManager>
CreateShareForReviewScreenManager(std::shared_ptr<ShareForReviewViewModel> const& viewModel,
                                  std::shared_ptr<PopupManager> const& popupManager);

}  // namespace quillomoxui
