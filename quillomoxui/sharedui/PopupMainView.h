#pragma once

#include "moxui/drawbot/ColorRGBA.h"
#include "quillomoxui/sharedui/PopupSectionView.h"
#include "quillomoxui/sharedui/StackViews.h"

namespace quillomoxui {

/// The column of a popup's sections. Main thread.
class PopupMainView : public VStackView {
public:
    PopupMainView();
    ~PopupMainView() override;

    /// Shows `section` alone, or, with null, every section. Headers are hidden by the first.
    void MaximizePopupSection(boost::intrusive_ptr<PopupSectionView> const& section);

    void UI_Draw(moxui::drawbot::Drawbot* drawbot) const override;
    void UI_ThemeChanged() override;

private:
    moxui::drawbot::ColorRGBA frameColor;
    float frameWidth = 1;
};

/// Puts a new section around `content` into `mainView` before the section at `index`, at the end
/// when there is none; shown or hidden as `show` says.
[[nodiscard]] boost::intrusive_ptr<PopupSectionView> InsertSection(
    PopupMainView& mainView, std::size_t index,
    boost::intrusive_ptr<moxui::ui::UI_SubView> const& content, bool show);

}  // namespace quillomoxui
