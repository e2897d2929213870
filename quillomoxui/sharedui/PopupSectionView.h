#pragma once

#include "moxui/drawbot/ColorRGBA.h"
#include "quillomoxui/sharedui/PopupSectionHeaderView.h"
#include "quillomoxui/sharedui/StackViews.h"

namespace quillomoxui {

/// One box of a popup: a header, hidden at first, above a content. Main thread.
class PopupSectionView : public VStackView {
public:
    /// A null `content` is an empty view.
    PopupSectionView(boost::intrusive_ptr<moxui::ui::UI_SubView> const& content,
                     UTF16String const& label, PictureSupplyHandler const& iconHandler);
    ~PopupSectionView() override;

    [[nodiscard]] virtual boost::intrusive_ptr<PopupSectionHeaderView> GetHeaderView() const;
    /// Never null.
    [[nodiscard]] virtual boost::intrusive_ptr<moxui::ui::UI_SubView> GetContentView() const;
    /// Lets go of the content before, shows `view` (an empty one when it is null) in its place, and
    /// makes the section as large as that calls for.
    virtual void SetContentView(boost::intrusive_ptr<moxui::ui::UI_SubView> const& view);

    void UI_Draw(moxui::drawbot::Drawbot* drawbot) const override;
    void UI_ThemeChanged() override;

private:
    void TakeColors();
    void ShowContent(boost::intrusive_ptr<moxui::ui::UI_SubView> const& view);

    boost::intrusive_ptr<PopupSectionHeaderViewImpl> header;
    boost::intrusive_ptr<moxui::ui::UI_SubView> content;
    moxui::drawbot::ColorRGBA backgroundColor;
    moxui::drawbot::ColorRGBA frameColor;
    float frameWidth = 1;
};

}  // namespace quillomoxui
