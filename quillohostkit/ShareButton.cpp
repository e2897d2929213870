#include "quillohostkit/ShareButton.h"

namespace quillohostkit {

ShareButton::ShareButton(QWidget* parent)
    : QToolButton(parent), controller(new ShareController(this)) {
    setText("Share");
    setToolTip("Share for review");
    setAccessibleName("Share for Review");
    connect(this, &QToolButton::clicked, controller, &ShareController::Open);
}

ShareButton::~ShareButton() = default;

}  // namespace quillohostkit
