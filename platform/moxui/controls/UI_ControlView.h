#pragma once

#include <functional>
#include <vector>

#include "moxui/skins/ThemeClient.h"
#include "moxui/ui/ConstMessage.h"
#include "moxui/ui/UI_SubView.h"

namespace moxui::controls {

class UI_ControlView;

/// A control was worked by the user.
class MOXUI_API UI_ControlChangedMessage : public ui::Message {
public:
    explicit UI_ControlChangedMessage(UI_ControlView* control) : control(control) {}
    [[nodiscard]] UI_ControlView* GetControl() const { return control; }

private:
    UI_ControlView* control;
};

/// An interactive view in the theme's colours: it can be disabled, and notifies when the user
/// changes or presses it. Main thread.
class MOXUI_API UI_ControlView : public ui::UI_SubView, public skins::ThemeClient {
public:
    UI_ControlView();
    ~UI_ControlView() override;

    /// Calls `function` (with a UI_ControlChangedMessage) whenever the user has changed or pressed
    /// the control; not when a program has. Functions are called in the order in which they came;
    /// the control stays alive while they run. What one throws is reported
    /// (moxcore/threads/MainThread.h), and the others still run.
    void NotifyWhenChanged(std::function<void(ui::Message*)> function);

    void UI_SetEnabled(bool enabled);
    void UI_SetDisabled(bool disabled) { UI_SetEnabled(!disabled); }
    [[nodiscard]] bool UI_IsEnabled() const;

protected:
    explicit UI_ControlView(std::unique_ptr<backend::Peer> peer);

    /// Calls the functions added: the user has changed or pressed the control.
    void NotifyChanged();

    void OnCustomThemeColorChanged() override;

private:
    std::vector<std::function<void(ui::Message*)>> changeFunctions;
};

}  // namespace moxui::controls
