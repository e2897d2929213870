#include "moxui/controls/UI_PicturePopup.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QMenu>
#include <QScreen>
#include <utility>

#include "moxui/backend/detail/drawing/FittedText.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/menus/ListStyle.h"
#include "moxui/backend/detail/menus/MenuNotices.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/backend/detail/windows/LastInput.h"
#include "moxui/backend/detail/windows/Wayland.h"

namespace moxui::controls {

/// The menu. Opened by itself and not as the button's own menu, for which Qt would run a loop.
class UI_PicturePopup::Menu : public QMenu {
public:
    explicit Menu(QAbstractButton& button) : QMenu(&button), button(button) {
        setStyle(&backend::ListStyle::Get());
        setToolTipsVisible(true);
        backend::WatchInput();
        button.installEventFilter(this);
        connect(&button, &QAbstractButton::pressed, this, [this] { Open(); });
        connect(this, &QMenu::aboutToHide, this, [this] {
            this->button.setDown(false);
            notices.HasClosed();
        });
    }
    ~Menu() override { notices.HasClosed(); }

    void Add(moxcore::string::UTF16String const& text) {
        backend::FittedText line;
        line.SetText(text);
        line.Fit(backend::ThemeFont(""), QSizeF(screen()->availableSize() / 2));
        // Qt takes the letter after a single "&" for a shortcut.
        addAction(line.GetFitted().replace(u'&', QStringLiteral("&&")));
    }

    backend::MenuNotices notices;
    UI_PicturePopup* popup = nullptr;  // null once it is gone

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Hide) hide();
        if (event->type() == QEvent::KeyPress) {
            auto const key = static_cast<QKeyEvent*>(event)->key();
            if (key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_F4) {
                Open();
                return true;
            }
        }
        return QMenu::eventFilter(watched, event);
    }

    void mousePressEvent(QMouseEvent* event) override {
        // The press that closes the menu must not open it again.
        auto const onButton = button.mapFromGlobal(event->globalPosition().toPoint());
        setAttribute(Qt::WA_NoMouseReplay, button.rect().contains(onButton));
        QMenu::mousePressEvent(event);
    }

private:
    void Open() {
        if (!popup || notices.IsOpen()) return;
        boost::intrusive_ptr<UI_PicturePopup> const alive(popup);
        notices.WillOpen();
        if (popup && button.isVisible() && !actions().isEmpty()) {
            backend::ApplyTheme(*this);
            auto const below = button.mapToGlobal(QPoint(0, button.height()));
            backend::HangFromPopup(*this, button);
            bool const fromRight = button.isRightToLeft();
            QMenu::popup(fromRight ? below + QPoint(button.width() - sizeHint().width(), 0)
                                   : below);
            if (backend::LastInputWasKey()) setActiveAction(actions().front());
        }
        if (!isVisible()) notices.HasClosed();
    }

    QAbstractButton& button;
};

UI_PicturePopup::UI_PicturePopup() : menu(new Menu(*GetPeer().GetWidgetAs<QAbstractButton>())) {
    menu->popup = this;
    QObject::connect(menu, &QMenu::triggered, GetPeer().Context(), [this](QAction* action) {
        value = static_cast<int>(menu->actions().indexOf(action));
        NotifyChanged();
    });
}

UI_PicturePopup::~UI_PicturePopup() {
    if (!GetPeer().GetWidget()) return;
    menu->hide();
    menu->popup = nullptr;
}

void UI_PicturePopup::AddItem(moxcore::string::UTF16String const& text) {
    if (GetPeer().GetWidget()) menu->Add(text);
}

int UI_PicturePopup::GetItemCount() const {
    return GetPeer().GetWidget() ? static_cast<int>(menu->actions().size()) : 0;
}

void UI_PicturePopup::EnableItem(int index, bool enabled) {
    if (index >= 0 && index < GetItemCount()) menu->actions().at(index)->setEnabled(enabled);
}

void UI_PicturePopup::SetPreShowPopupMenuFunction(MenuFunction function) {
    if (!GetPeer().GetWidget()) return;
    menu->notices.before = [shown = menu, function = std::move(function)] {
        if (shown->popup && function) function(*shown->popup);
    };
}

void UI_PicturePopup::SetPostShowPopupMenuFunction(MenuFunction function) {
    if (!GetPeer().GetWidget()) return;
    menu->notices.after = [shown = menu, function = std::move(function)] {
        if (shown->popup && function) function(*shown->popup);
    };
}

void UI_PicturePopup::OnPressed() {}

}  // namespace moxui::controls
