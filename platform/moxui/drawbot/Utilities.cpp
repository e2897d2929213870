#include "moxui/drawbot/Utilities.h"

namespace moxui::drawbot {

moxcore::string::UTF16String TruncateString(FontInterface const& font,
                                            moxcore::string::UTF16String const& text, float width,
                                            TruncationMode mode) {
    return font.Truncate(text, width, mode);
}

void FormRoundedRect(PathInterface& path, moxcore::geom::RectT<float> const& rect,
                     float cornerRadius) {
    path.AddRoundedRect(rect, cornerRadius);
}

}  // namespace moxui::drawbot
