#pragma once

#include <functional>
#include <optional>
#include <string>

#include "moxcore/threads/Clock.h"
#include "moxcore/utility/Guid.h"
#include "quillomoxui/properties/UTF16String.h"

namespace quillomoxui::model {

// A share's requests to the service, for the library itself: unlike the functions that a host
// calls, these say why they have failed. A completion is called once, on the service's own threads.
// False when nobody is signed in: nothing is called then, and the step has ended as NobodySignedIn
// says. Any thread.

/// How a step has ended.
struct StepEnd {
    enum class Kind {
        Done,
        Failed,     ///< reported to the failure listeners
        CalledOff,  ///< cancelled by the caller, or because the process ends
    };
    Kind kind = Kind::Done;
    std::string why = {};  ///< one sentence; empty when it is done

    [[nodiscard]] bool IsDone() const { return kind == Kind::Done; }
};

[[nodiscard]] StepEnd NobodySignedIn();

struct LinkRequest {
    moxcore::utility::Guid projectID;
    UTF16String name;
    std::function<void(StepEnd const&, moxcore::utility::Guid const& linkID,
                       UTF16String const& url)>
        completion;
};

/// Creates a review link. Without an ID or a URL it has failed.
[[nodiscard]] bool MakeReviewLink(LinkRequest const& request);

struct MovieUpload {
    UTF16String path;
    moxcore::utility::Guid folderID;
    moxcore::utility::Guid versionStackID;  ///< all zero: none
    /// Hears the fraction transferred; a CancelledException that it throws calls the upload off.
    std::function<void(double)> progress;
    /// Hears since when the upload has waited for the service, nothing once it goes on.
    std::function<void(std::optional<moxcore::threads::TimePoint>)> waiting;
    std::function<void(StepEnd const&, moxcore::utility::Guid const& assetID)> completion;
};

/// Uploads a movie as the newest version of its stack.
[[nodiscard]] bool UploadMovie(MovieUpload const& upload);

/// Puts an asset on a review link.
[[nodiscard]] bool PutOnLink(moxcore::utility::Guid const& assetID,
                             moxcore::utility::Guid const& linkID,
                             std::function<void(StepEnd const&)> const& completion);

}  // namespace quillomoxui::model
