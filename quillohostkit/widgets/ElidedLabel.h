#pragma once

#include <QWidget>

#include "quillohostkit/Export.h"

namespace quillohostkit {

/// One line of plain text that is shortened where it does not fit, and then is its tooltip.
class QUILLOHOSTKIT_API ElidedLabel : public QWidget {
public:
    ElidedLabel(QString const& name, Qt::TextElideMode mode);

    void SetText(QString const& newText);

    /// Makes it a status: assistive tools announce each text that it gets.
    void SetStatus() { isStatus = true; }
    [[nodiscard]] bool IsStatus() const { return isStatus; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    QString name;  // for assistive tools, before the text
    Qt::TextElideMode mode;
    QString text;
    bool isStatus = false;
};

}  // namespace quillohostkit
