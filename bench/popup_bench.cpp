// The share popup beside plain Qt widgets: building, showing and painting the review form, and
// laying out a stack of many children.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QStandardItemModel>
#include <QToolButton>
#include <memory>

#include "moxcore/string/Conversions.h"
#include "moxcore/threads/MainThread.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/skins/ThemeProvider.h"
#include "moxui/utility/ResourceManager.h"
#include "quillomoxui/sharedui/PopupManager.h"
#include "quillomoxui/sharedui/ShareForReviewScreenManager.h"
#include "quillomoxui/sharedui/StackViews.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace {

using namespace quillomoxui;

/// Runs what is queued, painting and destructions included.
void Settle() {
    while (moxcore::threads::MainThread::RunPending() > 0) {
    }
    // What is shown in one round may be painted in the next.
    for (int round = 0; round < 2; ++round)
        QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// The window that the popup hangs from.
class Editor : public QWidget {
public:
    Editor() {
        resize(500, 300);
        show();
        Settle();
    }
};

void OurForm(benchmark::State& state) {
    Editor window;
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

/// The theme, as one puts it on plain widgets.
struct Look {
    QFont font, bold;
    QPalette palette, link, blue;
    QIcon more;

    Look() {
        auto const& theme = moxui::skins::ThemeProvider::Get();
        font.setFamily(QString::fromStdString(theme.GetFontName(0)));
        font.setPixelSize(static_cast<int>(theme.GetFontSize(0)));
        bold = font;
        bold.setBold(true);
        palette = QPalette(QColor(0x33, 0x33, 0x33), QColor(0x24, 0x24, 0x24));
        link = blue = palette;
        link.setColor(QPalette::ButtonText, QColor(0x74, 0xB0, 0xFF));
        blue.setColor(QPalette::Button, QColor(0x26, 0x7F, 0xEB));
        blue.setColor(QPalette::ButtonText, Qt::white);

        auto const picture = moxui::utility::GetResourceManager().GetImage("MoreSmallList_18");
        QPixmap pixels(18, 18);
        pixels.fill(Qt::transparent);
        QPainter painter(&pixels);
        static_cast<moxui::backend::QtImage const&>(*picture).Paint(painter, {0, 0, 18, 18},
                                                                    Qt::LeftToRight);
        more = QIcon(pixels);
    }
};

/// The same texts, pictures and controls at the same places.
class PlainPopup : public QFrame {
public:
    PlainPopup(QWidget* window, Look const& look)
        : QFrame(window, Qt::Tool | Qt::FramelessWindowHint) {
        setFrameShape(QFrame::Box);
        setPalette(look.palette);
        setFont(look.font);
        auto* const title = AddText("Share for review:", {16, 13, 116, 16});
        title->setFont(look.bold);
        AddText("Opening titles", {162, 13, 111, 16});
        auto* const more = new QToolButton(this);
        more->setAutoRaise(true);
        more->setIcon(look.more);
        more->setIconSize({18, 18});
        more->setPopupMode(QToolButton::InstantPopup);
        auto* const menu = new QMenu(more);
        menu->addAction(QStringLiteral("Create new link"));
        menu->addAction(QStringLiteral("Sign out of Quillo"));
        more->setMenu(menu);
        more->setAccessibleName(QStringLiteral("More"));
        more->setGeometry(305, 9, 24, 24);

        AddText("Location:", {16, 43, 57, 16});
        auto* const link = new QPushButton(QStringLiteral("Select Quillo Location..."), this);
        link->setFlat(true);
        link->setPalette(look.link);
        link->setCursor(Qt::PointingHandCursor);
        link->setGeometry(73, 40, 259, 21);

        auto* const presets = new QComboBox(this);
        for (char const* const text :
             {"Preset Settings", "", "Web 720", "Web 1080", "Web 4k", "ProRes 422"})
            presets->addItem(QLatin1String(text));
        static_cast<QStandardItemModel*>(presets->model())->item(0)->setEnabled(false);
        presets->setCurrentIndex(3);
        presets->setAccessibleName(QStringLiteral("Preset Settings"));
        presets->setGeometry(17, 71, 124, 20);
        auto* const share = new QPushButton(QStringLiteral("Share"), this);
        share->setFont(look.bold);
        share->setPalette(look.blue);
        share->setGeometry(264, 71, 62, 20);
    }

private:
    QLabel* AddText(char const* text, QRect const& place) {
        auto* const label = new QLabel(QLatin1String(text), this);
        label->setTextFormat(Qt::PlainText);
        label->setGeometry(place);
        return label;
    }
};

void PlainForm(benchmark::State& state) {
    Editor window;
    Look const look;
    for (auto _ : state) {
        auto* const popup = new PlainPopup(&window, look);
        popup->setGeometry(100, 100, 344, 109);
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
    // The offscreen platform warns, each time, that it cannot raise a window.
    qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const&) {});
    QApplication const application(count, arguments);
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
}
