#pragma once

#include <QEvent>
#include <QFont>
#include <QPainter>
#include <QString>
#include <QStringList>
#include <QWidget>

#include "moxcore/string/UTF16String.h"

namespace moxui::backend {

/// A control's text as it is shown in the room that the control has for it. Laid out once for each
/// text, font and room, when that is first asked for. Main thread.
class FittedText {
public:
    /// Takes `text` as it may be shown: control characters become spaces. In a text of several
    /// lines a line feed begins a new one.
    void SetText(moxcore::string::UTF16String const& text, bool multiLine = false);
    void SetElideMode(Qt::TextElideMode mode);

    /// The whole text, as it may be shown.
    [[nodiscard]] QString const& GetWhole() const { return whole; }

    /// Its size in `font`, unwrapped, in whole units; one line high when it is empty.
    [[nodiscard]] QSize NaturalSize(QFont const& font) const;

    /// Has it laid out in `room`; a room less high than a line counts as one line high.
    void Fit(QFont const& font, QSizeF const& room);
    /// The part of the text that fits.
    [[nodiscard]] QString GetFitted() const;
    /// Whether something is left out.
    [[nodiscard]] bool IsElided() const;

    /// Draws it with the painter's font and pen in `place`: in its middle from top to foot, or from
    /// its top when it is of several lines; `alignment` across, where left is where a layout of
    /// `direction` begins. The letters run as their script has it.
    void Paint(QPainter& painter, QRectF const& place, Qt::Alignment alignment,
               Qt::LayoutDirection direction) const;

    /// Handles the event of a tooltip over `widget` when something was left out and the widget has
    /// no tooltip of its own: shows the whole text. False when it has not.
    [[nodiscard]] bool ShowWholeAsToolTip(QEvent const& event, QWidget& widget) const;

private:
    void LayOut() const;
    void Wrap() const;

    QString whole;
    QFont font;
    QSizeF room;
    Qt::TextElideMode elideMode = Qt::ElideRight;
    bool multiLine = false;

    // What `whole` is in `font` and `room`, once it has been laid out.
    mutable bool laidOut = false;
    mutable QStringList lines;
    mutable bool elided = false;
};

}  // namespace moxui::backend
