#include "moxui/controls/UI_PictureSupplyMessage.h"

#include "moxui/backend/detail/widgets/CallFromQt.h"

namespace moxui::controls {

UI_PictureSupplyMessage::UI_PictureSupplyMessage() = default;
UI_PictureSupplyMessage::~UI_PictureSupplyMessage() = default;

void UI_PictureSupplyMessage::SetIcon(std::string const& name, utility::ResourceManager* manager,
                                      bool, utility::DrawbotImageResourceCache*) {
    iconName = name;
    resources = manager;
    picture = manager ? manager->GetImage(name) : nullptr;
}

boost::intrusive_ptr<drawbot::ImageInterface> SuppliedPicture(
    PictureSupplyFunction const& function) {
    if (!function || !*function) return nullptr;
    UI_PictureSupplyMessage message;
    backend::CallFromQt([&] { (*function)(&message); });
    return message.GetPicture();
}

}  // namespace moxui::controls
