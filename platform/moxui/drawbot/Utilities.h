#pragma once

#include "moxui/Export.h"
#include "moxui/drawbot/Drawbot.h"

namespace moxui::drawbot {

/// `text` as it fits into `width` in `font`, with an ellipsis for what was left out.
[[nodiscard]] MOXUI_API moxcore::string::UTF16String TruncateString(
    FontInterface const& font, moxcore::string::UTF16String const& text, float width,
    TruncationMode mode);

/// Makes `path` a rectangle with round corners.
MOXUI_API void FormRoundedRect(PathInterface& path, moxcore::geom::RectT<float> const& rect,
                               float cornerRadius);

}  // namespace moxui::drawbot
