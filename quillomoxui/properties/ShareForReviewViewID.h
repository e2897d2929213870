#pragma once

#include <cstdint>

namespace quillomoxui {

/// The views of the share popup.
enum class ShareForReviewViewID : std::uint32_t {
    None = 0,  ///< the popup is closed
    DebugView = 1,
    Initial = 2,  ///< has no view
    SelectProject = 3,
    SelectFolder = 4,
    ReviewInQuillo = 5,
    SigninPrompt = 6,
    CopyLinkSection = 7,
    WaitingInQueue = 8,
    EncodingProgress = 9,
    UploadInProgress = 10,
};

}  // namespace quillomoxui
