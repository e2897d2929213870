#include "host/editor/Player.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <utility>

namespace quillohost::editor {

Player::Player(std::function<void(std::string const&)> tell)
    : view(new FrameView([this] { ReadFrame(); })),
      timeCode(new QLabel),
      slider(new QSlider(Qt::Horizontal)),
      duration(new QLabel),
      reader({.onFrame =
                  [this](QImage const& frame, FrameReader::Request const& request) {
                      if (request.file == movie->file) view->SetFrame(frame);
                  },
              .onFailure = std::move(tell)}) {
    auto* const transport = new QHBoxLayout;
    transport->setContentsMargins(12, 6, 12, 6);
    transport->setSpacing(12);
    transport->addWidget(timeCode);
    transport->addWidget(slider, 1);
    transport->addWidget(duration);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(view, 1);
    layout->addLayout(transport);

    auto const digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (auto* const label : {timeCode, duration}) {
        label->setFont(digits);
        label->setText("--:--:--:--");
    }
    timeCode->setAccessibleName("Time code");
    duration->setAccessibleName("Duration");
    slider->setAccessibleName("Position");
    slider->setEnabled(false);
    connect(slider, &QSlider::valueChanged, this, [this](int frame) { GoTo(frame); });
}

void Player::Show(Movie const& newMovie) {
    movie = newMovie;
    clock.emplace(newMovie);
    view->SetFrame({});
    view->SetText(movie->hasPicture ? "" : "Sound without a picture");
    duration->setText(QString::fromStdString(clock->TimeCode(clock->FrameCount())));
    {
        QSignalBlocker const blocker(slider);
        slider->setRange(0, clock->FrameCount() - 1);
        slider->setPageStep(clock->FramesPerSecond());
        slider->setValue(0);
    }
    slider->setEnabled(true);
    GoTo(0);
}

void Player::GoTo(int frame) {
    auto const text = QString::fromStdString(clock->TimeCode(frame));
    timeCode->setText(text);
    timeCode->setAccessibleName("Time code: " + text);
    ReadFrame();
}

void Player::ReadFrame() {
    if (!movie || !movie->hasPicture || view->PixelBounds().isEmpty()) return;
    reader.Read({movie->file, clock->SeekTime(slider->value()), view->PixelBounds()});
}

}  // namespace quillohost::editor
