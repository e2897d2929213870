#pragma once

#include <memory>

#include "moxui/Export.h"
#include "moxui/drawbot/Drawbot.h"

namespace moxui::drawbot {

/// A drawbot that only measures.
class MOXUI_API MeasuringDrawbot : public Drawbot {
public:
    /// One for `supplier`; the caller lets go of it after use. Asking again makes no new one.
    [[nodiscard]] static std::shared_ptr<MeasuringDrawbot> Get(SupplierInterface const* supplier);
};

}  // namespace moxui::drawbot
