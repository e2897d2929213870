#include "host/editor/Player.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <utility>

#include "quillohostkit/widgets/QtText.h"

namespace quillohost::editor {

using quillohostkit::QtText;
namespace {

/// The style's own slider is hardly to be seen on a dark ground.
constexpr char const* kSliderLook = R"(
QSlider { min-height: 20px; }
QSlider::groove:horizontal { height: 4px; border-radius: 2px; background: palette(mid); }
QSlider::sub-page:horizontal { border-radius: 2px; background: palette(highlight); }
QSlider::sub-page:horizontal:disabled { background: palette(mid); }
QSlider::handle:horizontal {
    width: 12px; margin: -5px 0; border-radius: 7px; border: 1px solid palette(window);
    background: palette(text);
}
QSlider::handle:horizontal:hover { background: palette(link); }
QSlider::handle:horizontal:focus { border: 2px solid palette(highlight); }
QSlider::handle:horizontal:disabled { background: palette(mid); }
)";

}  // namespace

Player::Player(std::function<void(std::string const&)> tell)
    : view(new FrameView([this] { ReadFrame(); })),
      timeCode(new QLabel),
      slider(new QSlider(Qt::Horizontal)),
      duration(new QLabel),
      reader({.onFrame =
                  [this](QImage const& frame, FrameReader::Request const& request) {
                      if (request.movie.opened == movie->opened) view->SetFrame(frame);
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
    timeCode->setAccessibleName(QtText("$$$/Vistrel/quillo-host/Player/TimeCode=Time code"));
    duration->setAccessibleName(QtText("$$$/Vistrel/quillo-host/Player/Duration=Duration"));
    slider->setAccessibleName(QtText("$$$/Vistrel/quillo-host/Player/Position=Position"));
    slider->setStyleSheet(kSliderLook);
    slider->setEnabled(false);
    connect(slider, &QSlider::valueChanged, this, [this](int frame) { GoTo(frame); });
}

void Player::Show(quillohostkit::Movie const& newMovie) {
    movie = newMovie;
    clock.emplace(newMovie);
    view->SetFrame({});
    view->SetText(movie->hasPicture
                      ? QString()
                      : QtText("$$$/Vistrel/quillo-host/Player/SoundOnly=Sound without a picture"));
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
    timeCode->setAccessibleName(
        QtText("$$$/Vistrel/quillo-host/Player/TimeCodeIs=Time code: {time}",
               {{"time", text.toStdString()}}));
    ReadFrame();
}

void Player::ReadFrame() {
    if (!movie || !movie->hasPicture || view->PixelBounds().isEmpty()) return;
    reader.Read({*movie, clock->SeekTime(slider->value()), view->PixelBounds()});
}

}  // namespace quillohost::editor
