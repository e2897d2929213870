#pragma once

#include <functional>
#include <memory>

#include "moxui/ui/DPISelectionType.h"
#include "moxui/ui/OS_ViewContainer.h"

namespace moxui::controls {

/// A window that hangs from a node of the host's and shows what is put into its container. Main
/// thread.
///
/// The user dismisses it with Escape, with a click elsewhere in the program, by closing it, or by
/// closing the window that it hangs from; a click on what it hangs from only dismisses it. A click
/// into a menu that was opened from inside it, into a dialog whose parent it is, or into a dialog
/// of the host's that has to be answered first, does not. It stays when another program comes to
/// the front, a browser for instance: the user comes back to it, and the click that brings the user
/// back only gives it the focus. One that does something in the program, by a button of the host's
/// for instance, or that opens a window, dismisses it as any other. It moves along with what it
/// hangs from.
///
/// Shown, it takes the keyboard's focus, and its first control has it when the user has come by
/// keyboard; hidden, it gives the focus back to where it was.
class MOXUI_API UI_TouchPopupContainer : public ui::UI_SubView {
public:
    /// A hidden popup that hangs from `parent`, without keeping it. Only `parent` has a meaning:
    /// there is one supplier and one way to be, for which the rest is false, true, false,
    /// OwnScreen, true.
    UI_TouchPopupContainer(drawbot::SupplierInterface const* supplier,
                           boost::intrusive_ptr<ui::UI_Node> const& parent, bool, bool, bool,
                           ui::DPISelectionType dpi, bool);
    ~UI_TouchPopupContainer() override;

    /// Has the popup hang from `newParent`, as if it had been made with it: it moves with that one,
    /// goes when that one does and gives the focus back there. One that is shown goes along to the
    /// same place beside it. Null, or a node without a widget: it stays where it is, and moves and
    /// goes with nothing.
    void SetAnchor(boost::intrusive_ptr<ui::UI_Node> const& newParent);

    /// Shows the popup, once the size of its content is set. One that is shown already stays
    /// as it is; what has come into it is given the focus as on showing.
    void StartPopup();

    /// Gives the content the size of `rect` and this place on the screen. What frame there is, the
    /// content draws. A place that would leave the screen is moved onto it: sideways, and above
    /// what the popup hangs from when there is no room below.
    void SetContentSize(moxcore::geom::RectT<float> const& rect);

    /// `function` runs each time the user dismisses the popup, after it was hidden; not when the
    /// program hides it. Takes the place of the one before; null for none. What it throws is
    /// reported, as what other handlers throw is (moxcore/threads/MainThread.h).
    void InstallNotifyOnCommit(std::shared_ptr<std::function<void()>> const& function);

    /// The container of the content: the first child, null once it was removed.
    [[nodiscard]] boost::intrusive_ptr<ui::OS_ViewContainer> GetContainer() const;

    /// Shows the popup as StartPopup does, or hides it.
    void UI_Show(bool show) override;

    /// Has all of the popup drawn anew.
    void Refresh();

    /// Tells that a menu opened from inside is open. While it is, no click dismisses the popup, nor
    /// does the one that closes the menu.
    void SetPopupMenuShowing(bool showing);
    [[nodiscard]] bool GetPopupMenuShowing() const;

    [[nodiscard]] drawbot::SupplierInterface const* UI_GetDrawSupplier() const override;

private:
    void OnDismissed();

    std::shared_ptr<std::function<void()>> notifyOnCommit;
};

}  // namespace moxui::controls
