// The share popup beside plain Qt widgets: building, showing and painting the review form, and
// laying out a stack of many children.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <memory>

#include "moxcore/string/Conversions.h"
#include "moxcore/threads/MainThread.h"
#include "moxui/backend/HostWidget.h"
#include "quillomoxui/sharedui/PopupManager.h"
#include "quillomoxui/sharedui/ShareForReviewScreenManager.h"
#include "quillomoxui/sharedui/StackViews.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace {

using namespace quillomoxui;

/// Runs what is queued, painting and destructions included.
void Settle() {
    do {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    } while (moxcore::threads::MainThread::RunPending() > 0);
}

void OurForm(benchmark::State& state) {
    QWidget window;
    window.resize(500, 300);
    window.show();
    auto const anchor = moxui::backend::WrapWidget(&window);
    auto const viewModel = std::make_shared<ShareForReviewViewModel>();
    viewModel->SetActiveAssetName(moxcore::string::AsciiToUTF16("Opening titles"));
    for (auto _ : state) {
        auto const popup = CreatePopupManager();
        popup->SetParent(anchor);
        auto const screens = CreateShareForReviewScreenManager(viewModel, popup);
        viewModel->EnableCurrentViewIDMessages(true);
        viewModel->SetCurrentViewID(ShareForReviewViewID::ReviewInQuillo);
        Settle();
        viewModel->SetCurrentViewID(ShareForReviewViewID::None);
        popup->DestructWindow();
        Settle();
    }
}

/// The same texts and controls at the same places.
void PlainForm(benchmark::State& state) {
    QWidget window;
    window.resize(500, 300);
    window.show();
    for (auto _ : state) {
        auto* const popup = new QFrame(&window, Qt::Tool | Qt::FramelessWindowHint);
        popup->setFrameShape(QFrame::Box);
        auto const add = [popup](QWidget* widget, int x, int y, int width, int height) {
            widget->setParent(popup);
            widget->setGeometry(x, y, width, height);
        };
        add(new QLabel(QStringLiteral("<b>Share for review:</b>")), 15, 12, 120, 14);
        add(new QLabel(QStringLiteral("Opening titles")), 160, 12, 120, 14);
        auto* const more = new QToolButton;
        more->setText(QStringLiteral("..."));
        add(more, 307, 11, 18, 18);
        add(new QLabel(QStringLiteral("Location:")), 15, 42, 60, 14);
        auto* const link = new QPushButton(QStringLiteral("Select Quillo Location..."));
        link->setFlat(true);
        add(link, 77, 42, 240, 14);
        auto* const presets = new QComboBox;
        for (char const* const text :
             {"Preset Settings", "", "Web 720", "Web 1080", "Web 4k", "ProRes 422"})
            presets->addItem(QLatin1String(text));
        add(presets, 16, 70, 120, 20);
        add(new QPushButton(QStringLiteral("Share")), 260, 70, 64, 20);
        popup->setGeometry(100, 100, 342, 107);
        popup->show();
        Settle();
        popup->hide();
        popup->deleteLater();
        Settle();
    }
}

class Sized : public moxui::ui::UI_SubView {
public:
    moxcore::geom::PointT<float> UI_GetRecommendedSize(moxui::drawbot::Drawbot*) const override {
        return {100, 20};
    }
};

void StackOf(benchmark::State& state) {
    boost::intrusive_ptr<VStackView> const stack(new VStackView);
    for (auto i = state.range(0); i > 0; --i) {
        boost::intrusive_ptr<Sized> const child(new Sized);
        child->UI_Show(true);
        stack->ChildPushBack(child);
    }
    float width = 100;
    for (auto _ : state) {
        width = 201 - width;
        stack->UI_SetLocalRectF({0, 0, width, 100});
    }
    state.SetComplexityN(state.range(0));
}

BENCHMARK(OurForm)->Unit(benchmark::kMicrosecond);
BENCHMARK(PlainForm)->Unit(benchmark::kMicrosecond);
BENCHMARK(StackOf)->Arg(10)->Arg(100)->Arg(1000)->Complexity(benchmark::oN);

}  // namespace

int main(int count, char** arguments) {
    qputenv("QT_NO_GLIB", "1");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication const application(count, arguments);
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
}
