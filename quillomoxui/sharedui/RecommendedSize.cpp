#include "quillomoxui/sharedui/RecommendedSize.h"

#include <cmath>

#include "moxui/drawbot/MeasuringDrawbot.h"
#include "moxui/ui/UI_NodeManager.h"

namespace quillomoxui {

moxcore::geom::PointT<float> GetRecommendedSize(
    boost::intrusive_ptr<moxui::ui::UI_Node> const& node) {
    auto const* supplier = node->UI_GetDrawSupplier();
    if (!supplier) supplier = moxui::ui::UI_NodeManager::Get(false)->GetDefaultDrawSupplier();
    auto const drawbot = moxui::drawbot::MeasuringDrawbot::Get(supplier);
    auto const size = node->UI_GetRecommendedSize(drawbot.get());
    return {std::ceil(size.x), std::ceil(size.y)};
}

}  // namespace quillomoxui
