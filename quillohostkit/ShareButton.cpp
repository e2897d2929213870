#include "quillohostkit/ShareButton.h"

#include "quillohostkit/widgets/QtText.h"

namespace quillohostkit {

ShareButton::ShareButton(QWidget* parent)
    : QToolButton(parent), controller(new ShareController(this)) {
    setText(QtText("$$$/Vistrel/quillohostkit/Share=Share"));
    setToolTip(QtText("$$$/Vistrel/quillohostkit/Button/Tip=Share for review"));
    setAccessibleName(QtText("$$$/Vistrel/quillohostkit/ShareForReview=Share for Review"));
    connect(this, &QToolButton::clicked, controller, &ShareController::Open);
}

ShareButton::~ShareButton() = default;

}  // namespace quillohostkit
