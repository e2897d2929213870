#pragma once

#include "moxui/controls/UI_PicturePopup.h"
#include "moxui/controls/UI_StaticText.h"
#include "moxui/ui/UI_SubView.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"
#include "quillomoxui/sharedui/SizedStaticImage.h"

namespace quillomoxui::view {

/// The line at the top of a share view: what is being done, the icon and the name of the asset, a
/// menu. Main thread.
class WorkflowLabel : public moxui::ui::UI_SubView {
public:
    explicit WorkflowLabel(PictureSupplyHandler const& assetTypeIcon);
    ~WorkflowLabel() override;

    void SetLabelText(UTF16String const& text);

    [[nodiscard]] moxcore::geom::PointT<float> UI_GetRecommendedSize(
        moxui::drawbot::Drawbot* drawbot) const override;
    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;

private:
    boost::intrusive_ptr<moxui::controls::UI_StaticText> title;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> name;
    boost::intrusive_ptr<SizedStaticImage> icon;
    boost::intrusive_ptr<moxui::controls::UI_PicturePopup> moreMenu;
};

}  // namespace quillomoxui::view
