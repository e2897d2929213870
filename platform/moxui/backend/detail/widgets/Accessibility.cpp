#include "moxui/backend/detail/widgets/Accessibility.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QProgressBar>
#include <algorithm>

#include "moxui/backend/detail/menus/DropDown.h"
#include "moxui/backend/detail/widgets/PushButton.h"
#include "moxui/backend/detail/widgets/ScrollWidget.h"
#include "moxui/backend/detail/widgets/ViewWidget.h"

namespace moxui::backend {
namespace {

constexpr char kStatus[] = "moxui_status";

QAccessible::Role QtRole(ui::AccessibleRole role) {
    switch (role) {
        case ui::AccessibleRole::Link:
            return QAccessible::Link;
        case ui::AccessibleRole::Button:
            return QAccessible::Button;
        case ui::AccessibleRole::ListItem:
            return QAccessible::ListItem;
        case ui::AccessibleRole::Image:
            return QAccessible::Graphic;
        case ui::AccessibleRole::Alert:
            return QAccessible::AlertMessage;
        case ui::AccessibleRole::Group:
        case ui::AccessibleRole::Decoration:
            break;
    }
    return QAccessible::Grouping;
}

class AccessibleView : public QAccessibleWidget {
public:
    explicit AccessibleView(ViewWidget* view) : QAccessibleWidget(view) {}

    QAccessible::Role role() const override {
        return QtRole(static_cast<ViewWidget*>(widget())->role);
    }

    QAccessible::State state() const override {
        auto state = QAccessibleWidget::state();
        auto const& view = static_cast<ViewWidget const&>(*widget());
        auto const role = view.role;
        state.selectable = role == ui::AccessibleRole::ListItem;
        state.selected = view.IsSelected();
        state.invisible |=
            role == ui::AccessibleRole::Decoration ||
            (role == ui::AccessibleRole::Image && widget()->accessibleName().isEmpty());
        return state;
    }

    QStringList actionNames() const override {
        QStringList names = QAccessibleWidget::actionNames();
        if (widget()->focusPolicy() != Qt::NoFocus) names.prepend(pressAction());
        return names;
    }
    void doAction(QString const& name) override {
        if (name == pressAction())
            static_cast<ViewWidget*>(widget())->Press();
        else
            QAccessibleWidget::doAction(name);
    }
};

/// Qt's own interface for buttons presses them some time later, and past the mouse-event functions.
class AccessibleButton : public QAccessibleWidget {
public:
    explicit AccessibleButton(PushButton* button) : QAccessibleWidget(button, RoleOf(*button)) {}

    QString text(QAccessible::Text kind) const override {
        auto const given = QAccessibleWidget::text(kind);
        return kind == QAccessible::Name && given.isEmpty() ? Button().GetLabel().GetWhole()
                                                            : given;
    }
    QAccessible::State state() const override {
        auto state = QAccessibleWidget::state();
        state.linked = role() == QAccessible::Link;
        state.hasPopup = role() == QAccessible::ButtonMenu;
        state.pressed = Button().isDown();
        state.checkable = Button().isCheckable();
        state.checked = Button().isChecked();
        state.defaultButton = Button().isDefault();
        return state;
    }

    QStringList actionNames() const override {
        return QStringList(pressAction()) + QAccessibleWidget::actionNames();
    }
    void doAction(QString const& name) override {
        if (name == pressAction())
            Button().Press();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    static QAccessible::Role RoleOf(PushButton const& button) {
        return button.findChild<QMenu*>(QString(), Qt::FindDirectChildrenOnly)
                   ? QAccessible::ButtonMenu
                   : QtRole(button.role);
    }
    [[nodiscard]] PushButton& Button() const { return *static_cast<PushButton*>(widget()); }
};

/// A drop-down menu. Qt's own says what is chosen in place of the name that it was given.
class AccessibleDropDown : public QAccessibleWidget {
public:
    explicit AccessibleDropDown(DropDown* dropDown)
        : QAccessibleWidget(dropDown, QAccessible::ComboBox) {}

    QString text(QAccessible::Text kind) const override {
        auto const given = QAccessibleWidget::text(kind);
        bool const isChoice =
            kind == QAccessible::Value || (kind == QAccessible::Name && given.isEmpty());
        return isChoice ? Shown().Entries().Text(Shown().ShownEntry()).GetWhole() : given;
    }
    QAccessible::State state() const override {
        auto state = QAccessibleWidget::state();
        state.expandable = true;
        state.expanded = Shown().IsOpen();
        state.hasPopup = true;
        return state;
    }

    int childCount() const override { return 1; }
    QAccessibleInterface* child(int index) const override {
        return index == 0 ? QAccessible::queryAccessibleInterface(&Shown().List()) : nullptr;
    }
    int indexOfChild(QAccessibleInterface const* child) const override {
        return child && child->object() == &Shown().List() ? 0 : -1;
    }

    QStringList actionNames() const override {
        return QStringList{showMenuAction(), pressAction()} + QAccessibleWidget::actionNames();
    }
    void doAction(QString const& name) override {
        if (name != showMenuAction() && name != pressAction())
            QAccessibleWidget::doAction(name);
        else if (Shown().IsOpen())
            Shown().hidePopup();
        else
            Shown().showPopup();
    }

private:
    DropDown& Shown() const { return *static_cast<DropDown*>(widget()); }
};

/// A list of rows, to a screen reader; the focus is with the rows where there are some.
class AccessibleScroll : public QAccessibleWidget {
public:
    explicit AccessibleScroll(ScrollWidget* scroll) : QAccessibleWidget(scroll) {}

    QAccessible::Role role() const override {
        return HasRows() ? QAccessible::List : QAccessible::Grouping;
    }
    QAccessible::State state() const override {
        auto state = QAccessibleWidget::state();
        state.focusable = !HasRows();
        return state;
    }

private:
    [[nodiscard]] bool HasRows() const {
        return static_cast<ScrollWidget*>(widget())->RowForTab() != nullptr;
    }
};

class AccessibleLabel : public QAccessibleWidget {
public:
    explicit AccessibleLabel(QLabel* label) : QAccessibleWidget(label) {}

    /// A label may become a status after it was asked about.
    QAccessible::Role role() const override {
        return widget()->property(kStatus).toBool() ? QAccessible::AlertMessage
                                                    : QAccessible::StaticText;
    }
    QString text(QAccessible::Text kind) const override {
        auto const given = QAccessibleWidget::text(kind);
        return kind == QAccessible::Name && given.isEmpty() ? static_cast<QLabel*>(widget())->text()
                                                            : given;
    }
};

/// Counts in percent: the bar's own numbers are steps, which say nothing to a listener.
class AccessibleProgress : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleProgress(QProgressBar* bar)
        : QAccessibleWidget(bar, QAccessible::ProgressBar) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Value) return QAccessibleWidget::text(kind);
        return QLocale().toString(Percent()) + " %";
    }
    QAccessible::State state() const override {
        auto state = QAccessibleWidget::state();
        state.readOnly = true;
        return state;
    }

    QVariant currentValue() const override { return Percent(); }
    void setCurrentValue(QVariant const&) override {}
    QVariant maximumValue() const override { return kWhole; }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }

private:
    static constexpr int kWhole = 100;

    /// Rounded down: the whole is for what is complete.
    [[nodiscard]] int Percent() const {
        auto const& bar = static_cast<QProgressBar const&>(*widget());
        return static_cast<int>(qint64(kWhole) * bar.value() / std::max(1, bar.maximum()));
    }
};

QAccessibleInterface* MakeInterface(QString const&, QObject* object) {
    if (auto* const view = qobject_cast<ViewWidget*>(object)) return new AccessibleView(view);
    if (auto* const button = qobject_cast<PushButton*>(object)) return new AccessibleButton(button);
    if (auto* const dropDown = dynamic_cast<DropDown*>(object))
        return new AccessibleDropDown(dropDown);
    if (auto* const scroll = dynamic_cast<ScrollWidget*>(object))
        return new AccessibleScroll(scroll);
    if (auto* const bar = qobject_cast<QProgressBar*>(object);
        bar && dynamic_cast<NodeLink*>(object))
        return new AccessibleProgress(bar);
    if (auto* const label = qobject_cast<QLabel*>(object); label && dynamic_cast<NodeLink*>(object))
        return new AccessibleLabel(label);
    return nullptr;
}

}  // namespace

void TellAssistiveToolsAboutViews() {
    static bool const isInstalled = [] {
        QAccessible::installFactory(&MakeInterface);
        return true;
    }();
    static_cast<void>(isInstalled);
}

void SetStatus(QWidget& label) {
    label.setProperty(kStatus, true);
}

}  // namespace moxui::backend
