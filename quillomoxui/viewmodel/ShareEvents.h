#pragma once

#include <string>

#include "moxcore/utility/Guid.h"
#include "quillomoxui/Export.h"
#include "quillomoxui/properties/UTF16String.h"

namespace quillomoxui {

/// A share: what one press of the Share button begins.
struct ShareInfo {
    moxcore::utility::Guid shareID;   ///< of this press; never null
    moxcore::utility::Guid assetID1;  ///< the asset, as the host has named it for this share
    moxcore::utility::Guid assetID2;
    UTF16String assetName;  ///< ActiveAssetName when the share began
};

enum class ShareFailureReason {
    NoLink,         ///< the service has made no review link
    NotExported,    ///< the host has given the export up: UploadFailed or None instead of a movie
    NotUploaded,    ///< the upload has failed; the exported movie stays
    NotOnLink,      ///< uploaded, but not put on its link; the asset's next share does it
    OtherUser,      ///< who has shared it has signed out
    Cancelled,      ///< by CancelShare
    Overtaken,      ///< another share has begun before this one had its movie
    HostCallback,   ///< a callback of the host has thrown, or was empty
    LibraryClosed,  ///< the view model is gone, or the process ends
};

/// Why a share has failed.
struct ShareFailure {
    ShareFailureReason reason;
    std::string
        text;  ///< one sentence in English, never empty; what the service said, where it did
};

/// Observer of the shares of a view model (ShareForReviewViewModel::ObserveShares). Events come in
/// order. Every share that began ends with exactly one ShareFinished or ShareFailed, which is its
/// last event. Shares may overlap: the upload of one goes on when the next one begins.
///
/// Threads: called on the main thread, never within the call that caused the event. Must not throw.
class QUILLO_API ShareEvents {
public:
    virtual ~ShareEvents();

    /// Share was pressed, or ProcessAssetForReview called, with a folder selected.
    virtual void ShareBegan(ShareInfo const& share);

    /// The link under which the movie will be, new or from an earlier share. Nothing is on a new
    /// one yet.
    virtual void LinkReady(ShareInfo const& share, moxcore::utility::Guid const& linkID,
                           UTF16String const& url);

    /// The host is asked to export the asset to `outputFilePath`; with the same values as the
    /// AssetProcessingMethod, which is called as well, and earlier.
    virtual void ExportWanted(ShareInfo const& share, UTF16String const& outputFilePath,
                              UTF16String const& processingID);

    /// How much of the movie the service has, from 0 to 1; 1 once it has published all of it. Goes
    /// back when the upload has to begin anew.
    virtual void UploadProgressed(ShareInfo const& share, double fraction);

    /// The movie is on its link, and the exported file is deleted.
    virtual void ShareFinished(ShareInfo const& share);

    /// The share has ended. What it made so far is kept, and sharing again goes on from there.
    virtual void ShareFailed(ShareInfo const& share, ShareFailure const& failure);
};

}  // namespace quillomoxui
