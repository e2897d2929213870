#include "moxui/backend/detail/Accessibility.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "moxui/backend/detail/ViewWidget.h"

namespace moxui::backend {
namespace {

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

QAccessibleInterface* MakeInterface(QString const&, QObject* object) {
    auto* const view = qobject_cast<ViewWidget*>(object);
    return view ? new AccessibleView(view) : nullptr;
}

}  // namespace

void TellAssistiveToolsAboutViews() {
    static bool const told = [] {
        QAccessible::installFactory(&MakeInterface);
        return true;
    }();
    static_cast<void>(told);
}

}  // namespace moxui::backend
