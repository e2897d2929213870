#include "moxui/backend/detail/windows/ToolTip.h"

#include <QApplication>
#include <QHelpEvent>
#include <QTextDocument>
#include <QToolTip>

#include "moxcore/utility/NoDestructor.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/drawing/WidgetStyle.h"

namespace moxui::backend {
namespace {

constexpr QLatin1String kStart("<p style=\"white-space:pre-wrap\">");
constexpr QLatin1String kEnd("</p>");

/// Longer texts must be wrapped, which Qt does with markup only.
constexpr qsizetype kLongestLine = 80;

/// Qt's tooltips are in the application's palette, which is the host's. There is one window for all
/// of them, which Qt makes anew for most.
void Show(QPoint const& globalPosition, QString const& markup, QWidget& widget,
          QRect const& place) {
    QToolTip::showText(globalPosition, markup, &widget, place);
    for (auto* const window : QApplication::topLevelWidgets())
        if (window->inherits("QTipLabel")) window->setPalette(ThemePalette());
}

/// Shows the tooltips of the widgets that it watches.
class Shower : public QObject {
protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto& widget = *static_cast<QWidget*>(watched);
        if (event->type() != QEvent::ToolTip || widget.toolTip().isEmpty()) return false;
        Show(static_cast<QHelpEvent const&>(*event).globalPos(), widget.toolTip(), widget, {});
        return true;
    }
};

}  // namespace

QString AsPlainToolTip(QString const& text) {
    if (text.size() <= kLongestLine && !Qt::mightBeRichText(text)) return text;
    return kStart + text.toHtmlEscaped() + kEnd;
}

QString FromPlainToolTip(QString const& toolTip) {
    if (!toolTip.startsWith(kStart)) return toolTip;
    QTextDocument document;
    document.setHtml(toolTip);
    return document.toPlainText();
}

void SetToolTip(QWidget& widget, QString const& text, int milliseconds) {
    // Never destroyed: widgets may outlive this library's own statics.
    static moxcore::utility::NoDestructor<Shower> shower;
    widget.installEventFilter(&*shower);
    widget.setToolTip(AsPlainToolTip(text));
    widget.setProperty(kToolTipDelayProperty, milliseconds);
    widget.setStyle(&WidgetStyle::Get());
}

void ShowToolTip(QPoint const& globalPosition, QString const& text, QWidget& widget,
                 QRect const& place) {
    Show(globalPosition, AsPlainToolTip(text), widget, place);
}

}  // namespace moxui::backend
