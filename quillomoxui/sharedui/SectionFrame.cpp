#include "quillomoxui/sharedui/SectionFrame.h"

namespace quillomoxui {

void StrokeAroundChildren(moxui::drawbot::Drawbot& drawbot,
                          moxui::ui::UI_Container const& container,
                          moxui::drawbot::ColorRGBA const& color, float width) {
    auto const path = drawbot.GetSupplier()->NewPath();
    for (auto child = container.ChildBegin(); child != container.ChildEnd(); ++child) {
        auto const rect = (*child)->UI_GetLocalRectF(true);
        if (!rect.IsEmpty()) path->AddRect(Grown(rect, width / 2));
    }
    drawbot.GetSurface()->StrokePath(*drawbot.GetSupplier()->NewPen(color, width), *path);
}

}  // namespace quillomoxui
