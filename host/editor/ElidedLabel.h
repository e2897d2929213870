#pragma once

#include <QWidget>

namespace quillohost::editor {

/// One line of plain text that is shortened where it does not fit, and then is its tooltip.
class ElidedLabel : public QWidget {
public:
    ElidedLabel(QString const& name, Qt::TextElideMode mode);

    void SetText(QString const& newText);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    QString name;  // for assistive tools, before the text
    Qt::TextElideMode mode;
    QString text;
};

}  // namespace quillohost::editor
