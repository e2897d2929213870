#include "moxui/drawbot/Utilities.h"

namespace moxui::drawbot {

moxcore::string::UTF16String TruncateString(FontInterface const& font,
                                            moxcore::string::UTF16String const& text, float width,
                                            TruncationMode mode) {
    if (mode == TruncationMode::None) return text;
    return font.Truncate(text, width, mode == TruncationMode::Middle);
}

void FormRoundedRect(PathInterface& path, moxcore::geom::RectT<float> const& rect,
                     float cornerRadius) {
    path.AddRoundedRect(rect, cornerRadius);
}

}  // namespace moxui::drawbot
