#pragma once

#include "moxui/controls/UI_ControlView.h"

namespace moxui::controls {

/// Shows the progress of an operation. Assistive tools read its value; give it an accessible name.
/// Main thread.
class MOXUI_API UI_ProgressBar : public UI_ControlView {
public:
    UI_ProgressBar();
    ~UI_ProgressBar() override;

    /// Shows `value` of `maximum`. More than the maximum is shown as full, and a maximum of 0 as
    /// empty.
    void SetProgress(unsigned value, unsigned maximum);
    /// As they were given.
    [[nodiscard]] unsigned GetValue() const { return value; }
    [[nodiscard]] unsigned GetMaximum() const { return maximum; }

private:
    unsigned value = 0;
    unsigned maximum = 0;
};

}  // namespace moxui::controls
