#include "moxui/backend/detail/widgets/PushButton.h"

#include <QKeyEvent>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/drawing/WidgetStyle.h"
#include "moxui/backend/detail/widgets/Accessibility.h"
#include "moxui/controls/UI_ControlView.h"

namespace moxui::backend {

PushButton::PushButton(ui::AccessibleRole role) : role(role) {
    TellAssistiveToolsAboutViews();
    setStyle(&WidgetStyle::Get());
    setFont(ThemeFont(""));
    setFocusPolicy(Qt::StrongFocus);
    setAutoDefault(true);  // Enter presses what has the focus
}

void PushButton::SetText(moxcore::string::UTF16String const& text) {
    label.SetText(text);
    // Qt takes the letter after a single "&" for a shortcut.
    setText(QString(label.GetWhole()).replace(u'&', QStringLiteral("&&")));
    Refit();
}

void PushButton::SetElideMode(Qt::TextElideMode mode) {
    label.SetElideMode(mode);
    Refit();
}

void PushButton::Press() {
    if (node && isEnabled() && !node->GetPeer().DeliverKeyPress()) click();
}

void PushButton::Refit() {
    label.Fit(font(), LabelRoom().size());
    update();
}

QColor PushButton::Color(int key) const {
    return node ? ToQColor(static_cast<controls::UI_ControlView const*>(node)->GetColor(key))
                : QColor();
}

bool PushButton::event(QEvent* event) {
    return label.ShowWholeAsToolTip(*event, *this) || QPushButton::event(event);
}

void PushButton::changeEvent(QEvent* event) {
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::FontChange) Refit();
}

void PushButton::keyPressEvent(QKeyEvent* event) {
    // A key that is held down presses once.
    if (!event->isAutoRepeat()) QPushButton::keyPressEvent(event);
}

void PushButton::resizeEvent(QResizeEvent* event) {
    QPushButton::resizeEvent(event);
    Refit();
}

}  // namespace moxui::backend
