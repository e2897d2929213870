#include "quillohostkit/ShareStatusLabel.h"

#include <QHBoxLayout>

#include "quillohostkit/widgets/ElidedLabel.h"
#include "quillohostkit/widgets/QtText.h"

namespace quillohostkit {
namespace {

constexpr int kPercent = 100;  // assistive tools say the bar's own numbers
constexpr int kProgressWidth = 120;

}  // namespace

ShareStatusLabel::ShareStatusLabel(ShareController* controller, QWidget* parent)
    : QWidget(parent),
      message(new ElidedLabel(QtText("$$$/Vistrel/quillohostkit/Message=Message"), Qt::ElideRight)),
      phase(new ElidedLabel(QtText("$$$/Vistrel/quillohostkit/Share=Share"), Qt::ElideMiddle)),
      progress(new QProgressBar),
      cancel(new QToolButton) {
    message->SetStatus();
    progress->setFixedWidth(kProgressWidth);
    progress->setTextVisible(false);
    progress->setAccessibleName(
        QtText("$$$/Vistrel/quillohostkit/Status/Progress=Progress of the share"));
    cancel->setText(QtText("$$$/Vistrel/quillohostkit/Status/Cancel=Cancel"));
    cancel->setAccessibleName(
        QtText("$$$/Vistrel/quillohostkit/Status/CancelName=Cancel the Share"));
    cancel->setAutoRaise(true);
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(message, 3);
    layout->addWidget(phase, 1);
    layout->addWidget(progress);
    layout->addWidget(cancel);

    auto* const state = controller->GetState();
    connect(cancel, &QToolButton::clicked, controller, &ShareController::Cancel);
    connect(state, &ShareState::changed, this, [this, state] { Show(*state); });
    connect(state, &ShareState::messageChanged, this, &ShareStatusLabel::showMessage);
    showMessage(state->message());
    Show(*state);
}

ShareStatusLabel::~ShareStatusLabel() = default;

void ShareStatusLabel::showMessage(QString const& line) {
    message->SetText(line);
}

void ShareStatusLabel::Show(ShareState const& state) {
    bool const isSharing = state.phase() != ShareState::Phase::Idle;
    phase->setVisible(isSharing);
    progress->setVisible(isSharing);
    cancel->setVisible(isSharing);
    if (!isSharing) return;
    phase->SetText(state.phaseText());
    cancel->setEnabled(state.canCancel());
    // Without a maximum the bar shows that nobody knows.
    progress->setRange(0, state.progress() < 0 ? 0 : kPercent);
    progress->setValue(static_cast<int>(state.progress() * kPercent));
}

}  // namespace quillohostkit
