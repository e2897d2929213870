#pragma once

#include <QWidget>

#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/ui/AccessibleRole.h"

namespace moxui::backend {

/// The widget of a view that draws itself, or that only holds others.
class ViewWidget : public QWidget, public NodeLink {
    Q_OBJECT
public:
    ViewWidget();

    ui::AccessibleRole role = ui::AccessibleRole::Group;

    /// Of several views, whether this is the one that is chosen; for assistive tools.
    void SetSelected(bool selected);
    [[nodiscard]] bool IsSelected() const { return isSelected; }

    /// Handles a press by an assistive tool.
    void Press();

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool isSelected = false;
};

/// The widget of a window's topmost view: Tab goes through what it holds in reading order.
class RootWidget : public ViewWidget {
    Q_OBJECT
public:
    RootWidget();

    /// Gives the focus to what Tab reaches first, if there is any.
    void FocusFirst(Qt::FocusReason reason);

protected:
    bool focusNextPrevChild(bool next) override;
};

}  // namespace moxui::backend
