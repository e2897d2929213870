#pragma once

#include <QWidget>

#include "host/gallery/Sheet.h"
#include "host/gallery/Windows.h"
#include "moxui/controls/UI_ScrollView.h"
#include "moxui/controls/UI_TextButton.h"
#include "moxui/ui/OS_ViewContainer.h"

namespace quillogallery {

/// The gallery on the screen: every sheet one below the other, and buttons for the theme and for
/// what are windows of their own. Tab gives each control the focus.
class LiveWindow : public QWidget {
public:
    explicit LiveWindow(std::vector<Kind> const& kinds);
    ~LiveWindow() override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    boost::intrusive_ptr<moxui::controls::UI_TextButton> AddButton(
        char const* text, float x, std::function<void()> const& onPress);
    void LayOut();

    boost::intrusive_ptr<moxui::ui::OS_ViewContainer> container;
    boost::intrusive_ptr<moxui::controls::UI_ScrollView> scroll;
    std::vector<boost::intrusive_ptr<Sheet>> sheets;
    boost::intrusive_ptr<moxui::controls::UI_TouchPopupContainer> popup;
    bool statesShown = false;
};

}  // namespace quillogallery
