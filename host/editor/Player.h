#pragma once

#include <QLabel>
#include <QSlider>
#include <QWidget>
#include <functional>
#include <optional>

#include "host/editor/FrameClock.h"
#include "host/editor/FrameReader.h"
#include "host/editor/FrameView.h"

namespace quillohost::editor {

/// Shows a movie: one of its pictures, its time code, and a slider to go to another one. Main
/// thread.
class Player : public QWidget {
public:
    /// `tell` is called with a line for the user when a picture cannot be shown. A Failure (Export)
    /// when ffmpeg is not installed.
    explicit Player(std::function<void(std::string const&)> tell);

    void Show(quillohostkit::Movie const& newMovie);

private:
    void GoTo(int frame);
    void ReadFrame();

    std::optional<quillohostkit::Movie> movie;
    std::optional<FrameClock> clock;
    FrameView* view;
    QLabel* timeCode;
    QSlider* slider;
    QLabel* duration;
    FrameReader reader;
};

}  // namespace quillohost::editor
