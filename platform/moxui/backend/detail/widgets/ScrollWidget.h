#pragma once

#include <QPointer>
#include <QScrollArea>
#include <functional>
#include <vector>

#include "moxui/backend/detail/widgets/Peer.h"

namespace moxui::backend {

/// Qt's scroll area: what gets the focus in it is scrolled into view, and the keys that nobody else
/// wants move the focus from row to row, or scroll where there are no rows.
class ScrollWidget : public QScrollArea, public NodeLink {
public:
    ScrollWidget();

    /// Runs when the content has been scrolled.
    std::function<void()> onScrolled;

    /// Puts the content where the scroll bars say.
    void PlaceContent();

    [[nodiscard]] bool CanScroll() const;

    /// The rows (views that are list items) in it that can have the focus, from the top.
    [[nodiscard]] std::vector<QWidget*> Rows() const;
    /// Of these, the one at which Tab stops: the one that had the focus last, or the first; null
    /// when there is none.
    [[nodiscard]] QWidget* RowForTab() const;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool MoveFocus(int key);
    void OnFocusChanged(QWidget* now);

    QPointer<QWidget> lastRow;
};

}  // namespace moxui::backend
