#pragma once

#include <QMenu>

#include "host/editor/Sharing.h"

namespace quillohost::editor {

/// The library's developer switches, which are in force until the program ends, and its trace.
class DeveloperMenu : public QMenu {
public:
    /// `parent` owns it; `sharing` must outlive it.
    DeveloperMenu(Sharing& sharing, QWidget& parent);
};

}  // namespace quillohost::editor
