#pragma once

#include <QPushButton>

#include "moxcore/string/UTF16String.h"
#include "moxui/backend/detail/drawing/FittedText.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/ui/AccessibleRole.h"

namespace moxui::backend {

/// The widget of a button: Qt's own, for the keys, the focus, a dialog's default and assistive
/// tools. How it looks is the derived class's. Its node is a UI_Button.
class PushButton : public QPushButton, public NodeLink {
    Q_OBJECT
public:
    explicit PushButton(ui::AccessibleRole role);

    ui::AccessibleRole const role;  // Button or Link

    void SetText(moxcore::string::UTF16String const& text);
    void SetElideMode(Qt::TextElideMode mode);
    [[nodiscard]] FittedText const& GetLabel() const { return label; }

    /// A press by the toolkit, or by an assistive tool: as one by key.
    void Press();

protected:
    /// Where the text may go; everywhere by default.
    [[nodiscard]] virtual QRectF LabelRoom() const { return QRectF(rect()); }
    /// Fits the text into its room, which has changed.
    void Refit();

    /// The node's colour of a key of ThemeColor.
    [[nodiscard]] QColor Color(int key) const;
    [[nodiscard]] bool IsHovered() const { return isEnabled() && underMouse(); }

    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    FittedText label;
};

}  // namespace moxui::backend
