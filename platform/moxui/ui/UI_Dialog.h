#pragma once

#include <memory>

#include "moxui/ui/OS_ViewContainer.h"
#include "moxui/ui/OS_Window.h"

namespace moxui::controls {
class UI_Button;
}

namespace moxui::ui {

/// A window that asks something of the user. Main thread.
///
/// Escape and the close box press the cancel button, Enter the commit button when it is enabled and
/// no other button has the focus; without a cancel button that can be pressed they close the
/// dialog. Its size is its content's; the user cannot change it.
class MOXUI_API UI_Dialog : public UI_SubView {
public:
    /// How a dialog ended.
    enum class Result {
        Closed,  // by the close box or Escape without a cancel button, by Close, or with its parent
        Cancelled,  // by its cancel button
        Committed,  // by its commit button
    };

    /// A hidden dialog over `parent`, which may be none. A modal one takes all input of the program
    /// while it is shown. `supplier` has no meaning here: there is only one.
    UI_Dialog(drawbot::SupplierInterface const* supplier, moxcore::string::UTF16String const& title,
              OS_Window const& parent, bool modal);
    ~UI_Dialog() override;

    /// The container of the content.
    [[nodiscard]] boost::intrusive_ptr<OS_ViewContainer> GetContentContainer() const;

    /// Two buttons of the content, that end the dialog, after all handlers of the press have
    /// run. A commit button that one of those before has disabled ends nothing. They take the place
    /// of those before; null for none.
    void SetButtons(boost::intrusive_ptr<controls::UI_Button> const& cancel,
                    boost::intrusive_ptr<controls::UI_Button> const& commit);

    /// Puts the dialog over the middle of its parent, or of the screen without one, and wholly onto
    /// the screen. While it is hidden it stays there when its size changes.
    void Position();

    /// Gives the content, and with it the dialog, its size.
    void SetContentSize(float width, float height);
    /// The same by a rectangle of which only the size counts.
    void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect) override;

    /// Has the content lay itself out again, and be drawn anew.
    void Relayout();

    /// Shows the dialog, modal, and returns when it has ended. The program's events and what is
    /// queued for the main thread go on meanwhile; another dialog may be shown from there, and
    /// returns first. The dialog lives at least that long. A dialog that is shown this way already
    /// returns Closed at once.
    Result ShowModal();

    /// Shows the dialog and returns, or hides it, by which ShowModal ends as by Close.
    void UI_Show(bool show) override;

    /// Ends and hides the dialog.
    void Close();

    [[nodiscard]] drawbot::SupplierInterface const* UI_GetDrawSupplier() const override;

private:
    struct State;

    void EndWith(controls::UI_Button* button, Result result);
    bool PressCancel();
    void PressCommit();

    std::unique_ptr<State> state;
};

}  // namespace moxui::ui
