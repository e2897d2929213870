#pragma once

#include "moxui/Export.h"

namespace moxui::drawbot {
class SupplierInterface;
}
namespace moxui::utility {
class ImageProvider;
}

namespace moxui::ui {

/// State shared by all nodes of the process. Main thread.
class MOXUI_API UI_NodeManager {
public:
    /// The one manager; `create` has no meaning, it is there from the start.
    [[nodiscard]] static UI_NodeManager* Get(bool create);

    /// For measuring what is in no window yet.
    [[nodiscard]] drawbot::SupplierInterface const* GetDefaultDrawSupplier() const;
    [[nodiscard]] utility::ImageProvider* GetImageProvider() const;

private:
    UI_NodeManager() = default;
};

}  // namespace moxui::ui
