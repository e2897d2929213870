#pragma once

#include "moxui/controls/UI_StaticText.h"
#include "moxui/drawbot/ColorRGBA.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"
#include "quillomoxui/sharedui/SizedStaticImage.h"
#include "quillomoxui/sharedui/StackViews.h"

namespace quillomoxui {

/// The line above a section's content: an icon and a label. Main thread.
class PopupSectionHeaderView : public HStackView {
public:
    ~PopupSectionHeaderView() override;

    virtual void SetLabelText(UTF16String const& text) = 0;
    /// Without a handler there is no picture.
    virtual void SetIconImageSupplyFunction(PictureSupplyHandler const& handler) = 0;

protected:
    PopupSectionHeaderView();
};

class PopupSectionHeaderViewImpl : public PopupSectionHeaderView {
public:
    PopupSectionHeaderViewImpl(UTF16String const& label, PictureSupplyHandler const& iconHandler);
    ~PopupSectionHeaderViewImpl() override;

    void SetLabelText(UTF16String const& text) override;
    void SetIconImageSupplyFunction(PictureSupplyHandler const& handler) override;
    void UI_Draw(moxui::drawbot::Drawbot* drawbot) const override;
    void UI_ThemeChanged() override;

private:
    boost::intrusive_ptr<SizedStaticImage> icon;
    boost::intrusive_ptr<moxui::controls::UI_StaticText> label;
    moxui::drawbot::ColorRGBA backgroundColor;
};

}  // namespace quillomoxui
