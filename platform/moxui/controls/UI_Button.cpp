#include "moxui/controls/UI_Button.h"

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/widgets/CallFromQt.h"
#include "moxui/backend/detail/widgets/PushButton.h"

namespace moxui::controls {

using backend::PushButton;

UI_Button::UI_Button(std::unique_ptr<backend::Peer> peer) : UI_ControlView(std::move(peer)) {
    // The peer ends the connection before this goes.
    QObject::connect(GetPeer().GetWidgetAs<PushButton>(), &QPushButton::clicked,
                     GetPeer().Context(), [this] {
                         boost::intrusive_ptr<UI_Button> const alive(this);
                         backend::CallFromQt([this] { OnPressed(); });
                     });
}

UI_Button::~UI_Button() = default;

void UI_Button::Press() {
    if (auto* const button = GetPeer().GetWidgetAs<PushButton>()) button->Press();
}

void UI_Button::SetDefaultButton(bool isDefault) {
    if (auto* const button = GetPeer().GetWidgetAs<PushButton>()) button->setDefault(isDefault);
}

bool UI_Button::IsDefaultButton() const {
    auto const* const button = GetPeer().GetWidgetAs<PushButton>();
    return button && button->isDefault();
}

void UI_Button::OnPressed() {
    NotifyChanged();
}

void UI_Button::SetText(moxcore::string::UTF16String const& newText) {
    text = newText;
    if (auto* const button = GetPeer().GetWidgetAs<PushButton>()) button->SetText(text);
}

void UI_Button::SetFontStyleName(std::string const& name) {
    if (auto* const widget = GetPeer().GetWidget()) widget->setFont(backend::NamedFont(name));
}

void UI_Button::SetTruncationMode(drawbot::TruncationMode mode) {
    if (auto* const button = GetPeer().GetWidgetAs<PushButton>())
        button->SetElideMode(backend::ToElideMode(mode));
}

}  // namespace moxui::controls
