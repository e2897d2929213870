#include "quillomoxui/sharedui/BindImageSupplyFunction.h"

#include "moxui/controls/UI_PictureSupplyMessage.h"

namespace quillomoxui {

using moxui::controls::UI_PictureSupplyMessage;

PictureSupplyHandler BindImageSupplyFunction(
    std::string const& iconName,
    std::function<moxui::utility::ResourceManager&()> const& getResourceManager) {
    return std::make_shared<PictureSupplyHandler::element_type>(
        moxui::ui::BindNonMemberConstMessageFunction<UI_PictureSupplyMessage>(
            [iconName, getResourceManager](UI_PictureSupplyMessage* message) {
                message->SetIcon(iconName, &getResourceManager(), true, nullptr);
            }));
}

}  // namespace quillomoxui
