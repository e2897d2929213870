#pragma once

#include <string>
#include <vector>

#include "moxui/controls/UI_HotTextButton.h"
#include "moxui/controls/UI_Popup.h"
#include "moxui/controls/UI_StaticText.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"
#include "quillomoxui/sharedui/CallToActionButton.h"
#include "quillomoxui/view/PopupBaseView.h"
#include "quillomoxui/view/WorkflowLabel.h"

namespace quillomoxui::view {

/// The form of a share: the asset, where it goes, a preset (which nothing reads as yet), and the
/// button that starts it. Main thread.
class ReviewInQuilloView : public PopupBaseView {
public:
    explicit ReviewInQuilloView(std::shared_ptr<ShareForReviewViewModel> const& viewModel);
    ~ReviewInQuilloView() override;

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
    void UI_SizeChanged(moxcore::geom::RectT<float> const& rect) override;

    /// The location's link leads to the step of the picker that is due when it is pressed.
    bool OnMouseEvent(moxui::ui::UI_Node* node, moxui::ui::MouseEvent const& event, bool& handled,
                      ShareForReviewViewID target) override;

private:
    /// A menu of `items` (UTF-8) under a heading, with `selected`, which counts the heading.
    boost::intrusive_ptr<moxui::controls::UI_Popup> CreatePresetPicker(
        std::vector<std::string> const& items, long selected);
    void OnUserChanged(std::shared_ptr<QuilloUser> const& user);
    void OnSelectionChanged(UTF16String const& path);
    [[nodiscard]] ShareForReviewViewID LocationTarget() const;
    void OnShareClicked(moxui::ui::Message* message);

    boost::intrusive_ptr<WorkflowLabel> workflowLabel;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> locationCaption;
    boost::intrusive_ptr<moxui::controls::UI_HotTextButton> locationLink;
    boost::intrusive_ptr<moxui::controls::UI_Popup> presetPicker;
    boost::intrusive_ptr<sharedui::CallToActionButton> shareButton;
    std::shared_ptr<BindingHandle> selectionBinding;  // to the user that there is
};

}  // namespace quillomoxui::view
