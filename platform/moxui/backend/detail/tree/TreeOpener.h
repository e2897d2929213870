#pragma once

#include <QBasicTimer>
#include <QObject>

#include "moxui/backend/detail/tree/TreeModel.h"

namespace moxui::backend {

class TreeWidget;

/// Opens all rows below one, some of them at a time, so that the event loop goes on meanwhile
/// however many there are.
class TreeOpener : public QObject {
public:
    /// A part of `tree`.
    explicit TreeOpener(TreeWidget& tree) : tree(tree) {}

    [[nodiscard]] bool IsOpening() const { return top != nullptr; }
    /// Begins with the rows below `row`, which the view knows.
    void Start(TreeModel::Row& row);
    /// Leaves the others closed.
    void Stop();
    /// Called when the view has laid out what is open: only then are more rows opened, so that the
    /// event loop runs between the two.
    void GoOn();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    TreeWidget& tree;
    QBasicTimer timer;
    TreeModel::RowPtr top;
    TreeModel::Row* next = nullptr;  // the one after those that are open
};

}  // namespace moxui::backend
