#pragma once

#include <functional>

#include "moxui/controls/UI_ControlView.h"

namespace moxui::controls {

/// Shows a part of a view that is larger than itself. Main thread.
///
/// It scrolls with the wheel, its bars and, when what has the focus leaves these keys alone, with
/// the arrows, Home, End and the Page keys. Where the content holds rows (views that are focusable
/// as ui::AccessibleRole::ListItem) these keys move the focus from row to row, and Tab stops at the
/// rows once, at the one that had the focus last. What gets the focus is scrolled into view.
class MOXUI_API UI_ScrollView : public UI_ControlView {
public:
    /// Scrolls up and down only: what is wider than the view is cut off.
    static constexpr unsigned kVerticalOnly = 8;

    /// `flags`: kVerticalOnly or 0. Without a `contentView` it gets an empty one.
    explicit UI_ScrollView(unsigned flags,
                           boost::intrusive_ptr<ui::UI_SubView> contentView = nullptr);
    ~UI_ScrollView() override;

    /// The view that is scrolled, never null. What is put into it is in its own coordinates, which
    /// scrolling does not change.
    [[nodiscard]] boost::intrusive_ptr<ui::UI_SubView> GetContentView() const { return content; }

    /// Makes the content view as large as `rect`, whose corner is (0, 0).
    void SetContentRect(moxcore::geom::RectT<float> const& rect);
    /// Takes the content's size for the scroll bars, and puts the content where they say. For after
    /// a change of the content's rectangle.
    void Update();

    /// How far the content is scrolled, in its coordinates; values that cannot be are moved to the
    /// nearest that can.
    [[nodiscard]] moxcore::geom::PointT<float> GetScrollPosition() const;
    void SetScrollPosition(moxcore::geom::PointT<float> const& position);

    /// `function` runs when the content has been scrolled, by whomever, before it is drawn: the
    /// moment to make what comes into view.
    void SetScrolledFunction(std::function<void()> function);

private:
    boost::intrusive_ptr<ui::UI_SubView> content;
};

}  // namespace moxui::controls
