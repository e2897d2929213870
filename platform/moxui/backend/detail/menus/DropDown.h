#pragma once

#include <QAbstractItemView>
#include <QComboBox>

#include "moxui/backend/detail/menus/MenuDelegate.h"
#include "moxui/backend/detail/menus/MenuNotices.h"
#include "moxui/backend/detail/widgets/Peer.h"
#include "moxui/controls/ButtonChromeType.h"

namespace moxui::backend {

/// The widget of a UI_Popup: Qt's combo box, with a menu that lists our entries below it.
class DropDown : public QComboBox, public NodeLink {
public:
    DropDown();
    ~DropDown() override;

    [[nodiscard]] MenuModel& Entries() { return *entries; }
    [[nodiscard]] MenuModel const& Entries() const { return *entries; }
    /// Shows the entry at `row` as chosen; none for -1.
    void ShowEntry(int row);
    [[nodiscard]] int ShownEntry() const { return delegate->chosen; }
    void SetChrome(controls::ButtonChromeType type);

    /// The room that the button needs beside a text of `textWidth`.
    [[nodiscard]] int WidthFor(int textWidth) const;

    MenuNotices notices;

    /// The menu's list, made when it is first needed: most popups are closed without anybody having
    /// opened their menus.
    [[nodiscard]] QAbstractItemView& List();
    [[nodiscard]] bool IsOpen() const { return list && list->isVisible(); }

    void showPopup() override;
    void hidePopup() override;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QRect Visual(QRect const& place) const;
    [[nodiscard]] QRect TextRoom() const;
    void Refit();

    MenuModel* entries;
    MenuDelegate* delegate;
    QAbstractItemView* list = nullptr;
    FittedText shown;  // the chosen entry's text
    controls::ButtonChromeType chrome = controls::ButtonChromeType::Push;
    bool isHiding = false;
};

}  // namespace moxui::backend
