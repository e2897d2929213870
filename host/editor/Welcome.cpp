#include "host/editor/Welcome.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "quillohostkit/widgets/QtText.h"

namespace quillohost::editor {

Welcome::Welcome(QList<QAction*> const& actions) {
    auto* const layout = new QVBoxLayout(this);
    layout->setSpacing(12);
    layout->addStretch();
    layout->addWidget(new QLabel(quillohostkit::QtText(
                          "$$$/Vistrel/quillo-host/Welcome=Drop a movie here, or open one.")),
                      0, Qt::AlignHCenter);
    for (auto* const action : actions) {
        auto* const button = new QPushButton(action->text());
        button->setMinimumWidth(220);
        connect(button, &QPushButton::clicked, action, &QAction::trigger);
        connect(action, &QAction::changed, button,
                [button, action] { button->setEnabled(action->isEnabled()); });
        layout->addWidget(button, 0, Qt::AlignHCenter);
    }
    layout->addStretch();
}

}  // namespace quillohost::editor
