#include "host/gallery/LiveWindow.h"

#include <QMetaObject>

#include "moxcore/string/Conversions.h"
#include "moxui/backend/HostWidget.h"
#include "moxui/sharedui/UI_ToastManager.h"
#include "moxui/skins/ThemeProvider.h"

namespace quillogallery {
namespace {

using namespace moxui;
using moxcore::string::UTF8to16;

constexpr float kBar = 40;

void SwitchTheme() {
    using skins::ThemeKind;
    bool const dark = skins::ThemeProvider::Get().GetKind() == ThemeKind::Dark;
    skins::ThemeProvider::SetTheme(dark ? ThemeKind::Light : ThemeKind::Dark);
}

void ShowToast() {
    sharedui::UI_ToastManager::GetDefaultInstance()->DisplayToastMessage(
        ui::GetMainTopLevelWindow(), UTF8to16("Copied"),
        sharedui::kToastManager_DefaultDurationInSeconds, sharedui::kToastManager_DefaultPriority);
}

}  // namespace

LiveWindow::LiveWindow(std::vector<Kind> const& kinds) {
    setWindowTitle("Gallery");
    container = backend::FillWidget(this);
    backend::SetMainTopLevelWindow(this);

    AddButton("Theme", 12, SwitchTheme);
    AddButton("Toast", 112, ShowToast);
    AddButton("Dialog", 212, [this] { MakeDialog(*container)->ShowModal(); });
    boost::intrusive_ptr<ui::UI_Node> const anchor = AddButton("Popup", 312, {});
    static_cast<controls::UI_TextButton&>(*anchor).NotifyWhenChanged(
        [this, anchor = anchor.get()](ui::Message*) {
            if (!popup) popup = MakePopup(anchor);
            Show(*popup, *anchor);
        });

    scroll = new controls::UI_ScrollView(0);
    container->ChildPushBack(scroll);
    scroll->UI_Show(true);
    float width = 0, height = 0;
    for (auto const& kind : kinds) {
        sheets.emplace_back(new Sheet(kind));
        scroll->GetContentView()->ChildPushBack(sheets.back());
        auto rect = sheets.back()->UI_GetLocalRectF(false);
        rect.y = height;
        sheets.back()->UI_SetLocalRectF(rect);
        width = std::max(width, rect.width);
        height += rect.height;
    }
    scroll->SetContentRect({0, 0, width, height});
    resize(static_cast<int>(width) + 20, 800);
}

LiveWindow::~LiveWindow() {
    backend::SetMainTopLevelWindow(nullptr);
}

void LiveWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    LayOut();
}

void LiveWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (statesShown) return;
    statesShown = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            for (auto const& sheet : sheets)
                sheet->BringIntoStates();
        },
        Qt::QueuedConnection);
}

boost::intrusive_ptr<controls::UI_TextButton> LiveWindow::AddButton(
    char const* text, float x, std::function<void()> const& onPress) {
    boost::intrusive_ptr<controls::UI_TextButton> button(
        new controls::UI_TextButton(UTF8to16(text)));
    container->ChildPushBack(button);
    button->UI_SetLocalRectF({x, 10, 90, 20});
    button->UI_Show(true);
    if (onPress) button->NotifyWhenChanged([onPress](ui::Message*) { onPress(); });
    return button;
}

void LiveWindow::LayOut() {
    if (!scroll) return;
    scroll->UI_SetLocalRectF(
        {0, kBar, static_cast<float>(width()), static_cast<float>(height()) - kBar});
    scroll->Update();
}

}  // namespace quillogallery
