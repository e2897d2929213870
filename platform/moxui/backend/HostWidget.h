#pragma once

#include <QWidget>
#include <boost/smart_ptr/intrusive_ptr.hpp>

#include "moxui/Export.h"
#include "moxui/ui/OS_ViewContainer.h"

namespace moxui::backend {

/// A node that stands for a widget of the host's own, to hang a popup from or to be the parent of a
/// dialog. Its rectangle is the widget's; it never changes or destroys the widget, and outlives it
/// as an empty node. Main thread.
[[nodiscard]] MOXUI_API boost::intrusive_ptr<ui::UI_Node> WrapWidget(QWidget* widget);

/// A view that fills a widget of the host's own, in the theme's colours: what is put into it is
/// shown there. The host keeps the reference for as long as the views are to be seen. Main thread.
[[nodiscard]] MOXUI_API boost::intrusive_ptr<ui::OS_ViewContainer> FillWidget(QWidget* widget);

/// The widget that shows `node`; null when Qt has destroyed it. The node's own: not to be deleted,
/// nor moved elsewhere.
[[nodiscard]] MOXUI_API QWidget* GetWidget(ui::UI_Node const& node);

/// Has assistive tools speak the accessible name of a widget that is shown, such as a status that
/// has changed: Qt announces none by itself. Main thread.
MOXUI_API void Announce(QWidget& widget);

/// Registers the host's main window, which ui::GetMainTopLevelWindow answers from now on; null for
/// none. Main thread.
MOXUI_API void SetMainTopLevelWindow(QWidget* window);

/// Has the functions that are queued for the main thread run by Qt's event loop. Called once, after
/// the QApplication was made and on its thread; ends with the application.
MOXUI_API void RunMainThreadQueueInQt();

}  // namespace moxui::backend
