#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <QThread>
#include <functional>

#include "quillohostkit/media/MovieProbe.h"

namespace quillohost::editor {

/// Reads pictures of a movie with ffmpeg, on a thread of its own. Of the pictures asked for while
/// one is read, only the last is read next. Main thread.
class FrameReader : public QObject {
public:
    struct Request {
        quillohostkit::Movie movie;
        double seconds = 0;  ///< the first picture from here on
        QSize bounds;        ///< the picture is made as large as fits, in pixels
    };

    struct Hooks {
        std::function<void(QImage const&, Request const&)> onFrame;
        std::function<void(std::string const&)> onFailure;  ///< one line: what failed
    };

    /// `hooks` are called on the main thread. A Failure (Export) when ffmpeg is not installed.
    explicit FrameReader(Hooks hooks);

    /// Ends what is being read.
    ~FrameReader() override;

    void Read(Request const& request);

private:
    class Worker;

    Hooks hooks;
    QThread thread;
    Worker* worker;  // the thread's, and gone with it
};

}  // namespace quillohost::editor
