#pragma once

#include <QImage>
#include <QWidget>
#include <functional>

namespace quillohost::editor {

/// Shows a picture of a movie as large as fits, or a text where there is none. Main thread.
class FrameView : public QWidget {
public:
    /// `onResized` is called when the picture has room for another size.
    explicit FrameView(std::function<void()> onResized);

    /// Shows `newFrame` until the next one; a null one takes the picture away.
    void SetFrame(QImage const& newFrame);
    /// Shown where there is no picture.
    void SetText(QString const& newText);

    /// The room for a picture, in pixels of the screen.
    [[nodiscard]] QSize PixelBounds() const;

    [[nodiscard]] QSize sizeHint() const override { return {960, 540}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    std::function<void()> onResized;
    QImage frame;
    QString text;
};

}  // namespace quillohost::editor
