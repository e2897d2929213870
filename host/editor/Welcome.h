#pragma once

#include <QAction>
#include <QWidget>

namespace quillohost::editor {

/// The window's content while there is no movie: a button for each of `actions`, the ways to
/// open one.
class Welcome : public QWidget {
public:
    explicit Welcome(QList<QAction*> const& actions);
};

}  // namespace quillohost::editor
