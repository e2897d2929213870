#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <functional>
#include <memory>
#include <string>

#include "moxui/Export.h"
#include "moxui/drawbot/ImageInterface.h"
#include "moxui/ui/ConstMessage.h"
#include "moxui/utility/DrawbotImageResourceCache.h"
#include "moxui/utility/ResourceManager.h"

namespace moxui::controls {

/// Asks for the picture that a control shows. The handler fills it in; main thread.
class MOXUI_API UI_PictureSupplyMessage : public ui::ConstMessage {
public:
    UI_PictureSupplyMessage();
    ~UI_PictureSupplyMessage() override;

    /// Answers with the picture `name` of `resources`. `themed` and `cache` have no meaning here:
    /// pass true and null.
    void SetIcon(std::string const& name, utility::ResourceManager* resources, bool themed,
                 utility::DrawbotImageResourceCache* cache);

    /// The handler's answer; null, an empty name and null before.
    [[nodiscard]] boost::intrusive_ptr<drawbot::ImageInterface> const& GetPicture() const {
        return picture;
    }
    [[nodiscard]] std::string const& GetIconName() const { return iconName; }
    [[nodiscard]] utility::ResourceManager* GetResources() const { return resources; }

private:
    boost::intrusive_ptr<drawbot::ImageInterface> picture;
    std::string iconName;
    utility::ResourceManager* resources = nullptr;
};

/// Answers a picture-supply message. Shared, never copied.
using PictureSupplyFunction = std::shared_ptr<std::function<void(ui::ConstMessage*)>>;

/// The picture that `function` supplies; null without a function or an answer.
[[nodiscard]] MOXUI_API boost::intrusive_ptr<drawbot::ImageInterface> SuppliedPicture(
    PictureSupplyFunction const& function);

}  // namespace moxui::controls
