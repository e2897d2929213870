#pragma once

#include <gtest/gtest.h>

#include <QPushButton>
#include <functional>
#include <memory>
#include <vector>

#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/controls/UI_TextButton.h"
#include "moxui/controls/UI_TouchPopupContainer.h"
#include "support/TestWindow.h"

namespace moxui::controls {

using testsupport::RunEvents;
using testsupport::WidgetOf;

/// A host with a field that has the focus, the button that the popup hangs from, and the popup with
/// two buttons in it.
class TouchPopup : public ::testing::Test {
protected:
    TouchPopup() {
        host.setGeometry(200, 100, 500, 300);
        field.setParent(&host);
        button.setParent(&host);
        button.setGeometry(400, 10, 60, 20);
        host.show();
        host.activateWindow();
        field.setFocus();
        RunEvents();
        anchor = backend::WrapWidget(&button);
        popup = Make(anchor);
        popup->InstallNotifyOnCommit(
            std::make_shared<std::function<void()>>([this] { ++commits; }));
    }
    ~TouchPopup() override {
        popup.reset();
        RunEvents();
    }

    static boost::intrusive_ptr<UI_TouchPopupContainer> Make(
        boost::intrusive_ptr<ui::UI_Node> const& parent) {
        return new UI_TouchPopupContainer(nullptr, parent, false, true, false,
                                          ui::DPISelectionType::OwnScreen, true);
    }

    static boost::intrusive_ptr<UI_TextButton> Add(ui::UI_Container& parent, float x,
                                                   char const* text) {
        boost::intrusive_ptr<UI_TextButton> inside(new UI_TextButton);
        inside->SetText(moxcore::string::UTF8to16(text));
        parent.ChildPushBack(inside);
        inside->UI_SetLocalRectF({x, 10, 50, 20});
        inside->UI_Show(true);
        return inside;
    }

    void Open() {
        auto const right = Add(*popup->GetContainer(), 70, "");  // comes first
        buttons = {Add(*popup->GetContainer(), 10, ""), right};
        popup->StartPopup();
        popup->SetContentSize({460, 134, 200, 120});
        popup->Refresh();
        RunEvents();
    }

    [[nodiscard]] bool IsOpen() const {
        EXPECT_EQ(WidgetOf(*popup).isVisible(), popup->UI_IsViewVisible());
        return WidgetOf(*popup).isVisible();
    }

    QWidget host;
    QPushButton field, button;
    boost::intrusive_ptr<ui::UI_Node> anchor;
    boost::intrusive_ptr<UI_TouchPopupContainer> popup;
    std::vector<boost::intrusive_ptr<UI_TextButton>> buttons;  // from the left
    int commits = 0;
};

}  // namespace moxui::controls
