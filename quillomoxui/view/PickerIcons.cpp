#include "quillomoxui/view/PickerIcons.h"

#include "moxui/skins/ThemeProvider.h"
#include "moxui/utility/ResourceManager.h"
#include "quillomoxui/sharedui/BindImageSupplyFunction.h"
#include "quillomoxui/utility/GetResourceManager.h"

namespace quillomoxui::view {
namespace {

PictureSupplyHandler Chevron(char const* newSkinsName, char const* oldSkinsName) {
    return BindImageSupplyFunction(
        moxui::skins::IsRunningV7OrBeyond() ? newSkinsName : oldSkinsName,
        &moxui::utility::GetResourceManager);
}

}  // namespace

PictureSupplyHandler const& ProjectIcon() {
    static auto const handler =
        BindImageSupplyFunction("S_QuilloProjectName_16", &utility::GetResourceManager);
    return handler;
}

PictureSupplyHandler const& ForwardChevron() {
    static auto const handler = Chevron("S_ChevronRight_18", "S_Chevron_Right_6x8");
    return handler;
}

PictureSupplyHandler const& BackChevron() {
    static auto const handler = Chevron("S_ChevronLeft_18", "S_Chevron_Left_6x8");
    return handler;
}

}  // namespace quillomoxui::view
