#include "moxui/controls/UI_PicturePopup.h"

#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <utility>

#include "moxui/backend/detail/Conversions.h"
#include "moxui/backend/detail/ItemText.h"
#include "moxui/backend/detail/ListStyle.h"
#include "moxui/backend/detail/MenuButton.h"
#include "moxui/backend/detail/MenuModel.h"
#include "moxui/backend/detail/Peer.h"
#include "moxui/backend/detail/Theme.h"
#include "moxui/skins/ThemeSize.h"

namespace moxui::controls {
namespace {

namespace Size = skins::ThemeSize;

class PictureMenuButton : public QPushButton, public backend::NodeLink {
public:
    PictureMenuButton() : menu(new QMenu(this)) {
        setStyle(&backend::ListStyle::Get());
        menu->setStyle(&backend::ListStyle::Get());
        setMenu(menu);
        setAttribute(Qt::WA_Hover);
        connect(menu, &QMenu::aboutToShow, this, [this] { WillOpen(); });
        connect(menu, &QMenu::aboutToHide, this, [this] {
            notices.HasClosed();
            update();
        });
    }
    ~PictureMenuButton() override { notices.HasClosed(); }

    QMenu& Menu() { return *menu; }
    QMenu const& Menu() const { return *menu; }

    backend::MenuNotices notices;
    ButtonChromeType chrome = ButtonChromeType::Framed;
    PictureSupplyFunction picture;

protected:
    void keyPressEvent(QKeyEvent* event) override {
        switch (event->key()) {
            case Qt::Key_Space:
            case Qt::Key_Return:
            case Qt::Key_Enter:
            case Qt::Key_Up:
            case Qt::Key_Down:
            case Qt::Key_F4:
                if (!event->isAutoRepeat()) showMenu();
                return;
            default:
                event->ignore();
        }
    }

    void paintEvent(QPaintEvent*) override {
        if (!node) return;
        auto const& colors = static_cast<UI_PicturePopup const&>(*node);
        QPainter painter(this);
        backend::PaintMenuButton(painter, *this, colors,
                                 {chrome, underMouse(), isDown() || notices.IsOpen()});
        if (!isEnabled()) painter.setOpacity(0.5);
        if (auto const shown = SuppliedPicture(picture))
            backend::PaintPicture(painter, QRectF(rect()), *shown);
    }

private:
    void WillOpen() {
        backend::ApplyTheme(*menu);
        notices.WillOpen();
        update();
    }

    QMenu* menu;
};

PictureMenuButton* WidgetOf(UI_PicturePopup const& popup) {
    return popup.GetPeer().GetWidgetAs<PictureMenuButton>();
}

}  // namespace

UI_PicturePopup::UI_PicturePopup(PictureSupplyFunction picture)
    : UI_ControlView(backend::MakePeer<PictureMenuButton>()) {
    WidgetOf(*this)->picture = std::move(picture);
    QObject::connect(&WidgetOf(*this)->Menu(), &QMenu::triggered, [this](QAction* action) {
        value = action->data().toInt();
        NotifyChanged();
    });
}

UI_PicturePopup::~UI_PicturePopup() {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    widget->Menu().hide();
    widget->Menu().disconnect();
    widget->notices.HasClosed();
}

void UI_PicturePopup::AddItem(moxcore::string::UTF16String const& text) {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    auto const most = widget->screen()->availableSize().width() / 2;
    auto line = QFontMetrics(backend::ThemeFont(""))
                    .elidedText(backend::OnOneLine(backend::ToQString(text)), Qt::ElideRight, most);
    auto const index = GetItemCount();
    // What follows a "&" would become the item's key.
    widget->Menu().addAction(line.replace(QLatin1Char('&'), QLatin1String("&&")))->setData(index);
}

int UI_PicturePopup::GetItemCount() const {
    auto const* const widget = WidgetOf(*this);
    return widget ? static_cast<int>(widget->Menu().actions().size()) : 0;
}

void UI_PicturePopup::EnableItem(int index, bool enabled) {
    if (index < 0 || index >= GetItemCount()) return;
    WidgetOf(*this)->Menu().actions().at(index)->setEnabled(enabled);
}

void UI_PicturePopup::SetButtonChromeType(ButtonChromeType type) {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    widget->chrome = type;
    widget->update();
}

void UI_PicturePopup::SetPreShowPopupMenuFunction(MenuFunction function) {
    if (auto* const widget = WidgetOf(*this))
        widget->notices.before = [widget, function = std::move(function)] {
            if (widget->node && function) function(static_cast<UI_PicturePopup&>(*widget->node));
        };
}

void UI_PicturePopup::SetPostShowPopupMenuFunction(MenuFunction function) {
    if (auto* const widget = WidgetOf(*this))
        widget->notices.after = [widget, function = std::move(function)] {
            if (widget->node && function) function(static_cast<UI_PicturePopup&>(*widget->node));
        };
}

moxcore::geom::PointT<float> UI_PicturePopup::UI_GetRecommendedSize(drawbot::Drawbot*) const {
    auto const* const widget = WidgetOf(*this);
    auto const shown = widget ? SuppliedPicture(widget->picture) : nullptr;
    if (!shown) return {};
    auto const size = shown->GetSize();
    return {static_cast<float>(size.x), static_cast<float>(size.y)};
}

}  // namespace moxui::controls
