#pragma once

#include <QMenu>

namespace quillohost::editor {

/// The library's developer switches, which are in force until the program ends, and its trace.
class DeveloperMenu : public QMenu {
public:
    /// `parent` owns it.
    explicit DeveloperMenu(QWidget& parent);
};

}  // namespace quillohost::editor
