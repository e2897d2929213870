#pragma once

#include <string>

#include "moxui/controls/UI_ControlView.h"
#include "moxui/drawbot/TruncationMode.h"

namespace moxui::controls {

/// Base of all buttons. A press by mouse, by Enter or Space, or by an assistive tool
/// notifies (NotifyWhenChanged) when it ends over the button. Tab reaches it. Main thread.
class MOXUI_API UI_Button : public UI_ControlView {
public:
    ~UI_Button() override;

    /// Presses the button as the user does: it notifies. Nothing while it is disabled.
    void Press();

    /// Makes the button, which is in a dialog already, the one that Enter presses there while no
    /// other button has the focus. One of a dialog at a time.
    void SetDefaultButton(bool isDefault);
    /// Whether Enter presses it as things stand, be it the default one or the one with the focus.
    [[nodiscard]] bool IsDefaultButton() const;

protected:
    /// `peer` shows a backend::PushButton.
    explicit UI_Button(std::unique_ptr<backend::Peer> peer);

    /// The user has pressed the button, which stays alive during the call. Notifies.
    virtual void OnPressed();

    // For buttons that show a text, which make these public. It is one line, which is left out with
    // an ellipsis where it does not fit; the whole text then is the tooltip, unless UI_SetToolTip
    // gave another. Markup and "&" are shown as they stand, control characters as spaces.
    void SetText(moxcore::string::UTF16String const& newText);
    /// As it was given.
    [[nodiscard]] moxcore::string::UTF16String const& GetText() const { return text; }
    /// "", "Regular" or "Bold": the theme's face in that style. Another name is that of a face:
    /// that one, or the theme's where the system has none of that name.
    void SetFontStyleName(std::string const& name);
    /// Where the ellipsis goes; at the end unless called. With None the text is cut where its place
    /// ends.
    void SetTruncationMode(drawbot::TruncationMode mode);

private:
    moxcore::string::UTF16String text;
};

}  // namespace moxui::controls
