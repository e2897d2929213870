#pragma once

#include <cstdint>

#include "quillomoxui/Export.h"

namespace quillomoxui {

/// How far the export and the upload of the asset are. The host reports `Queued`, `Encoding` and
/// `EncodingComplete`; the view model itself sets the others. Any other code is kept and means
/// nothing.
///
/// A host whose export has failed sets `UploadFailed` (or `None`), and calls
/// StartShareForReviewPopup if the popup is open: that shows the review form again, where the user
/// can press Share. Before an asset is shared again, or another one, it sets `None`, the
/// EncodingProgress 0 and an empty ReviewLinkURL: otherwise the popup opens on the link of the
/// share before.
struct QUILLO_API EncodingStatus {
    /// The stages, in the order in which a share passes them.
    enum Code : std::uint32_t {
        None = 0,
        Queued = 1,
        Encoding = 2,
        EncodingComplete = 3,  ///< the exported file is complete: the upload starts
        Uploading = 6,
        UploadComplete = 7,
        UploadFailed = 8,
    };

    std::uint32_t status = None;

    friend bool operator==(EncodingStatus const&, EncodingStatus const&) = default;
};

}  // namespace quillomoxui
