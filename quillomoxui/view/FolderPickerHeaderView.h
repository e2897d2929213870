#pragma once

#include "moxui/controls/UI_StaticImage.h"
#include "moxui/controls/UI_StaticText.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"

namespace quillomoxui::view {

/// Names the project whose folders are shown, and leads back to the project step. Main thread.
class FolderPickerHeaderView : public moxui::controls::UI_ControlView {
public:
    explicit FolderPickerHeaderView(
        std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const& currentViewID);
    ~FolderPickerHeaderView() override;

    void SetHeaderName(UTF16String const& project, UTF16String const& workspace);
    [[nodiscard]] UTF16String GetProjectName() const;

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;
    bool UI_DoPointerEvent(moxui::ui::UI_Node* node, moxui::ui::PointerEvent const& event) override;
    void UI_Draw(moxui::drawbot::Drawbot* drawbot) const override;

private:
    bool hovered = false;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> projectName;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> workspaceName;
    boost::intrusive_ptr<moxui::controls::UI_StaticImage> chevron;
    boost::intrusive_ptr<moxui::controls::UI_StaticImage> projectIcon;
    std::shared_ptr<CurrentViewIDNotifyingPropertyHost> const currentViewID;
};

}  // namespace quillomoxui::view
