#include "moxui/controls/UI_Popup.h"

#include <QComboBox>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QListView>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScreen>
#include <QScrollBar>
#include <QToolTip>
#include <algorithm>
#include <utility>

#include "moxui/backend/detail/Chevron.h"
#include "moxui/backend/detail/Conversions.h"
#include "moxui/backend/detail/ItemText.h"
#include "moxui/backend/detail/ListStyle.h"
#include "moxui/backend/detail/MenuButton.h"
#include "moxui/backend/detail/MenuModel.h"
#include "moxui/backend/detail/Peer.h"
#include "moxui/backend/detail/Theme.h"
#include "moxui/backend/detail/ToolTip.h"
#include "moxui/skins/ThemeSize.h"

namespace moxui::controls {
namespace {

namespace Key = skins::ThemeColor;
namespace Size = skins::ThemeSize;
using backend::MenuDelegate;
using backend::MenuModel;

/// A menu with more entries than this scrolls.
constexpr int kEntriesSeen = 16;
constexpr int kChevronRoom = Size::kChevron + Size::kControlPadding;
constexpr int kIconRoom = Size::kMenuIcon + Size::kControlPadding / 2;

/// The open menu's list: the arrows and Home and End pass over what cannot be chosen.
class MenuList : public QListView {
protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override {
        auto const* const entries = static_cast<MenuModel const*>(model());
        auto const target = QListView::moveCursor(action, modifiers);
        bool const goesUp = action == MoveUp || action == MoveEnd || action == MovePageDown ||
                            action == MovePrevious || action == MoveLeft;
        auto const towards = [&](int step) {
            int row = target.row();
            while (row >= 0 && row < entries->rowCount() && !entries->CanBeChosen(row))
                row += step;
            return entries->index(row);
        };
        auto const found = towards(goesUp ? -1 : 1);
        return found.isValid() ? found : towards(goesUp ? 1 : -1);
    }
};

class DropDown : public QComboBox, public backend::NodeLink {
public:
    DropDown() : entries(new MenuModel(this)) {
        setModel(entries);
        auto* const list = new MenuList;
        setView(list);
        delegate = new MenuDelegate(*entries, this);
        list->setItemDelegate(delegate);
        list->setUniformItemSizes(true);
        list->verticalScrollBar()->setStyle(&backend::ListStyle::Get());
        list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        list->window()->setStyle(&backend::ListStyle::Get());
        list->window()->installEventFilter(this);
        setStyle(&backend::ListStyle::Get());
        setMaxVisibleItems(kEntriesSeen);
        setAttribute(Qt::WA_Hover);
    }
    ~DropDown() override {
        view()->window()->removeEventFilter(this);
        notices.HasClosed();
    }

    MenuModel& Entries() { return *entries; }
    MenuModel const& Entries() const { return *entries; }
    MenuDelegate const& Delegate() const { return *delegate; }

    void ShowEntry(int row) {
        delegate->chosen = row;
        setCurrentIndex(row);
        update();
    }

    void showPopup() override {
        if (!node || notices.IsOpen()) return;
        boost::intrusive_ptr<ui::UI_Node> const alive(node);
        notices.WillOpen();
        if (node && isVisible() && isEnabled()) {
            auto& menu = *view()->window();
            backend::ApplyTheme(menu);
            int const bar = count() > kEntriesSeen ? Size::kScrollBar : 0;
            int const wanted = delegate->WidthOfWidest(font()) + bar + 2;
            view()->setMinimumWidth(std::min(wanted, screen()->availableSize().width() / 2));
            QComboBox::showPopup();
        }
        if (!view()->isVisible()) notices.HasClosed();
    }

    void hidePopup() override {
        {
            // Qt holds the model's signals back while it hides the menu, and whoever hears that it
            // has closed may change the entries.
            QScopedValueRollback const hiding(isHiding, true);
            QComboBox::hidePopup();
        }
        if (!view()->isVisible()) notices.HasClosed();
        update();
    }

    backend::MenuNotices notices;
    ButtonChromeType chrome = ButtonChromeType::Framed;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        bool const isMenu = watched == view()->window();
        if (isMenu && event->type() == QEvent::Hide && !isHiding) {
            notices.HasClosed();
            update();
        }
        return QComboBox::eventFilter(watched, event);
    }

    bool event(QEvent* event) override {
        if (event->type() != QEvent::ToolTip || !toolTip().isEmpty())
            return QComboBox::event(event);
        auto const text = backend::OnOneLine(currentText());
        if (fontMetrics().horizontalAdvance(text) > TextRect().width())
            QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                               backend::AsPlainToolTip(text), this);
        return true;
    }

    void keyPressEvent(QKeyEvent* event) override {
        switch (event->key()) {
            case Qt::Key_Space:
            case Qt::Key_Return:
            case Qt::Key_Enter:
            case Qt::Key_Up:
            case Qt::Key_Down:
            case Qt::Key_F4:
                showPopup();
                return;
            default:
                // The choice is changed in the open menu only.
                event->ignore();
        }
    }

    void wheelEvent(QWheelEvent* event) override { event->ignore(); }

    void paintEvent(QPaintEvent*) override {
        if (!node) return;
        auto const& colors = static_cast<UI_Popup const&>(*node);
        QPainter painter(this);
        backend::PaintMenuButton(painter, *this, colors, {chrome, underMouse(), notices.IsOpen()});

        auto const color = [&](int key) {
            return backend::ToQColor(colors.GetColor(isEnabled() ? key : Key::kDisabledText));
        };
        if (auto const picture = entries->Picture(currentIndex())) {
            if (!isEnabled()) painter.setOpacity(0.5);
            backend::PaintPicture(
                painter, QRectF(Visual(QRect(Size::kControlPadding, 0, Size::kMenuIcon, height()))),
                *picture);
            painter.setOpacity(1);
        }
        backend::PaintItemText(painter, QRectF(TextRect()), currentText(), color(Key::kButtonText));
        auto const arrow = Visual(
            QRect(width() - Size::kControlPadding - Size::kChevron, 0, Size::kChevron, height()));
        backend::PaintChevron(painter, QRectF(arrow).center(), backend::ChevronDirection::Down,
                              color(Key::kIcon));
    }

private:
    QRect Visual(QRect const& rect) const {
        return QStyle::visualRect(layoutDirection(), this->rect(), rect);
    }
    QRect TextRect() const {
        int const icon = entries->Picture(currentIndex()) ? kIconRoom : 0;
        return Visual(rect().adjusted(Size::kControlPadding + icon, 0,
                                      -Size::kControlPadding - kChevronRoom, 0));
    }

    MenuModel* entries;
    MenuDelegate* delegate;
    bool isHiding = false;
};

DropDown* WidgetOf(UI_Popup const& popup) {
    return popup.GetPeer().GetWidgetAs<DropDown>();
}

}  // namespace

UI_Popup::UI_Popup(int, bool) : UI_ControlView(backend::MakePeer<DropDown>()) {
    auto* const widget = WidgetOf(*this);
    QObject::connect(widget, &QComboBox::activated, [this](int row) {
        value = row;
        ShowValue();
        NotifyChanged();
    });
}

UI_Popup::~UI_Popup() {
    if (auto* const widget = WidgetOf(*this)) widget->hidePopup();
}

void UI_Popup::AddHeading(moxcore::string::UTF16String const& text) {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    widget->Entries().Append(MenuModel::Kind::Heading, backend::ToQString(text));
    ShowValue();
}

void UI_Popup::AddItem(moxcore::string::UTF16String const& text) {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    widget->Entries().Append(MenuModel::Kind::Item, backend::ToQString(text));
    ShowValue();
}

void UI_Popup::AddItemWithCustomIcon(moxcore::string::UTF16String const& text) {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    widget->Entries().Append(MenuModel::Kind::CustomIconItem, backend::ToQString(text));
    ShowValue();
}

void UI_Popup::DeleteAllItems() {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    widget->Entries().Clear();
    ShowValue();
}

int UI_Popup::GetItemCount() const {
    auto const* const widget = WidgetOf(*this);
    return widget ? widget->Entries().rowCount() : 0;
}

moxcore::string::UTF16String UI_Popup::GetItemText(int index) const {
    auto const* const widget = WidgetOf(*this);
    return widget ? backend::FromQString(widget->Entries().Text(index))
                  : moxcore::string::UTF16String();
}

void UI_Popup::EnableItem(int index, bool enabled) {
    if (auto* const widget = WidgetOf(*this)) widget->Entries().SetEnabled(index, enabled);
}

void UI_Popup::EnableAllItems() {
    if (auto* const widget = WidgetOf(*this)) widget->Entries().EnableAll();
}

void UI_Popup::SetCustomIconMenuItemImageFunction(ItemImageFunction function) {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    if (!function)
        widget->Entries().picture = nullptr;
    else
        widget->Entries().picture = [function = std::move(function)](int row) {
            UI_PictureSupplyMessage message;
            function(&message, row);
            return message.GetPicture();
        };
    widget->update();
}

void UI_Popup::SetValue(int newValue) {
    value = newValue;
    ShowValue();
}

void UI_Popup::ShowValue() {
    if (auto* const widget = WidgetOf(*this))
        widget->ShowEntry(widget->Entries().IsItem(value) ? value : -1);
}

void UI_Popup::SetPickerMeasureStrategy(PickerMeasureStrategy strategy) {
    measureStrategy = strategy;
}

void UI_Popup::SetButtonChromeType(ButtonChromeType type) {
    auto* const widget = WidgetOf(*this);
    if (!widget) return;
    widget->chrome = type;
    widget->update();
}

void UI_Popup::SetPreShowPopupMenuFunction(MenuFunction function) {
    if (auto* const widget = WidgetOf(*this))
        widget->notices.before = [widget, function = std::move(function)] {
            if (widget->node && function) function(static_cast<UI_Popup&>(*widget->node));
        };
}

void UI_Popup::SetPostShowPopupMenuFunction(MenuFunction function) {
    if (auto* const widget = WidgetOf(*this))
        widget->notices.after = [widget, function = std::move(function)] {
            if (widget->node && function) function(static_cast<UI_Popup&>(*widget->node));
        };
}

moxcore::geom::PointT<float> UI_Popup::UI_GetRecommendedSize(drawbot::Drawbot*) const {
    auto const* const widget = WidgetOf(*this);
    if (!widget) return {};
    auto const font = backend::ThemeFont("");
    auto const& entries = widget->Entries();
    int const text = measureStrategy == PickerMeasureStrategy::WidestItem
                         ? entries.WidestText(font)
                         : QFontMetrics(font).horizontalAdvance(
                               backend::OnOneLine(entries.Text(widget->currentIndex())));
    int const width =
        text + 2 * Size::kControlPadding + kChevronRoom + (entries.HasPictures() ? kIconRoom : 0);
    return {static_cast<float>(width), static_cast<float>(Size::kControlHeight)};
}

}  // namespace moxui::controls
