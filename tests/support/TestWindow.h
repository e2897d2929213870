#pragma once

#include <QImage>
#include <QWidget>
#include <boost/smart_ptr/intrusive_ptr.hpp>

#include "moxui/ui/OS_ViewContainer.h"

namespace testsupport {

/// A plain window with views in it, shown for as long as the object lives.
class TestWindow {
public:
    explicit TestWindow(int width = 400, int height = 300);
    ~TestWindow();

    /// Puts `view`, shown, into the window at `rect`.
    void Add(boost::intrusive_ptr<moxui::ui::UI_SubView> const& view,
             moxcore::geom::RectT<float> const& rect);

    [[nodiscard]] QWidget& Widget() { return widget; }
    [[nodiscard]] moxui::ui::OS_ViewContainer& Container() const { return *container; }

private:
    QWidget widget;
    boost::intrusive_ptr<moxui::ui::OS_ViewContainer> container;
};

/// The widget that shows `node`.
[[nodiscard]] QWidget& WidgetOf(moxui::ui::UI_Node const& node);

/// Runs what is queued for the main thread and in Qt's loop, destructions included, until nothing
/// is left.
void RunEvents();

/// `widget` as it looks now.
[[nodiscard]] QImage PictureOf(QWidget& widget);

}  // namespace testsupport
