#include "moxui/backend/detail/ToolTip.h"

#include <QTextDocument>

#include "moxui/backend/detail/WidgetStyle.h"

namespace moxui::backend {
namespace {

constexpr QLatin1String kStart("<p style=\"white-space:pre-wrap\">");
constexpr QLatin1String kEnd("</p>");

/// What is longer must be wrapped, which Qt does with markup only.
constexpr qsizetype kLongestLine = 80;

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

void SetToolTipDelay(QWidget& widget, int milliseconds) {
    widget.setProperty(kToolTipDelayProperty, milliseconds);
    widget.setStyle(&WidgetStyle::Get());
}

}  // namespace moxui::backend
