#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <functional>
#include <memory>

#include "moxui/ui/UI_SubView.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"

namespace quillomoxui::view {

/// The second step of picking a location: the project chosen in the first, and the tree of its
/// folders. Main thread.
class FolderPickerView {
public:
    /// Both are not null.
    [[nodiscard]] static boost::intrusive_ptr<FolderPickerView> CreateFolderPickerView(
        std::shared_ptr<QuilloUser> const& user,
        std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID);

    FolderPickerView(FolderPickerView const&) = delete;
    FolderPickerView& operator=(FolderPickerView const&) = delete;

    /// The view that this is.
    [[nodiscard]] virtual moxui::ui::UI_SubView& GetView() = 0;

    /// `function` runs when the user has pressed Enter on a folder.
    virtual void SetFolderActivatedFunction(std::function<void()> function) = 0;

    /// Gives the keyboard's focus to the tree.
    virtual void TakeFocus() = 0;

protected:
    FolderPickerView() = default;
    virtual ~FolderPickerView() = default;
};

inline void intrusive_ptr_add_ref(FolderPickerView* picker) {
    picker->GetView().AddReference();
}
inline void intrusive_ptr_release(FolderPickerView* picker) {
    picker->GetView().ReleaseReference();
}

}  // namespace quillomoxui::view
