#pragma once

#include "moxui/ui/AccessibleRole.h"
#include "moxui/ui/UI_Container.h"

namespace moxui::ui {

/// A rectangle inside another view. Empty and see-through by itself; it starts hidden, as every
/// view does; the code that builds it shows it. Main thread.
class MOXUI_API UI_SubView : public UI_Container {
public:
    UI_SubView();
    ~UI_SubView() override;

    /// Shows or hides the view where its parents are shown.
    virtual void UI_Show(bool show);
    /// Whether the view itself is shown, whatever its parents are.
    [[nodiscard]] bool UI_IsViewVisible() const { return visible; }

    /// Gives the view its place, in the parent's coordinates, exactly as it is: fractions count,
    /// and are rounded only on the screen. Then the view lays itself out (UI_SizeChanged).
    virtual void UI_SetLocalRectF(moxcore::geom::RectT<float> const& rect);
    [[nodiscard]] moxcore::geom::RectT<float> UI_GetLocalRectF(
        bool inParentCoordinates) const override;

    /// Lays the children out in `rect`, the view's rectangle in its own coordinates. Nothing by
    /// default.
    virtual void UI_SizeChanged(moxcore::geom::RectT<float> const& rect);

    /// Whether Tab stops here; Enter and Space then press the view as a mouse's button 1 does. A
    /// screen reader calls it by `role`. For views that draw themselves: a ready-made control does
    /// this by itself.
    void UI_SetFocusable(bool focusable, AccessibleRole role);
    /// Tells assistive tools whether the view, one of several (AccessibleRole::ListItem), is the
    /// one that is chosen.
    void UI_SetAccessibleSelected(bool selected);
    /// Whether the view itself has the keyboard's focus.
    [[nodiscard]] bool UI_HasFocus() const;
    /// Gives the view the keyboard's focus, in its window if that is not the active one.
    void UI_SetFocus();

protected:
    /// Takes over the widget's side of the view.
    explicit UI_SubView(std::unique_ptr<backend::Peer> peer);

    /// The area that the view paints, in the parent's coordinates: its rectangle, or, for a view
    /// without children, a larger one around it.
    [[nodiscard]] virtual moxcore::geom::RectT<float> UI_GetDrawnRect() const;
    /// Call it when the result of UI_GetDrawnRect has changed.
    void UI_DrawnRectChanged();

private:
    moxcore::geom::RectT<float> rect;
    bool visible = false;
};

}  // namespace moxui::ui
