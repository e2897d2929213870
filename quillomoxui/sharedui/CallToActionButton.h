#pragma once

#include "moxui/controls/UI_TextButton.h"

namespace quillomoxui::sharedui {

/// The filled, bold button of what a view is there for. Main thread.
class CallToActionButton : public moxui::controls::UI_TextButton {
public:
    CallToActionButton();
    ~CallToActionButton() override;
};

}  // namespace quillomoxui::sharedui
