#include "support/Seen.h"

#include <QApplication>
#include <QHelpEvent>
#include <QToolTip>

namespace testsupport {

QRect InkOf(QImage const& picture) {
    QRect ink;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixel(x, y) != picture.pixel(0, 0)) ink |= QRect(x, y, 1, 1);
    return ink;
}

QString ToolTipOver(QWidget& widget) {
    auto const middle = widget.rect().center();
    QHelpEvent event(QEvent::ToolTip, middle, widget.mapToGlobal(middle));
    QApplication::sendEvent(&widget, &event);
    return event.isAccepted() ? QToolTip::text() : QString();
}

moxui::controls::PictureSupplyFunction ToolkitPicture(std::string const& name) {
    using moxui::controls::UI_PictureSupplyMessage;
    return std::make_shared<std::function<void(moxui::ui::ConstMessage*)>>(
        moxui::ui::BindNonMemberConstMessageFunction<UI_PictureSupplyMessage>(
            [name](UI_PictureSupplyMessage* message) {
                message->SetIcon(name, &moxui::utility::GetResourceManager(), true, nullptr);
            }));
}

}  // namespace testsupport
