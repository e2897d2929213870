#pragma once

namespace moxui::drawbot {

/// Where a text that is too long loses what does not fit. The numbers are the toolkit's.
enum class TruncationMode {
    None = 0,
    Middle = 1,
    End = 2,
    Start = 3,
};

}  // namespace moxui::drawbot
