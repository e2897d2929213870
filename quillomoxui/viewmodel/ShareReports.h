#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "quillomoxui/viewmodel/ShareEvents.h"

namespace quillomoxui {

/// Notifies observers of the shares of one view model, and makes sure that each share that began
/// ends once: an event of a share that is not under way is dropped. Shares under way when it is
/// destroyed have failed. Any thread; nothing of an observer runs within a call.
class ShareReports {
public:
    using Guid = moxcore::utility::Guid;

    ShareReports() = default;
    ~ShareReports();
    ShareReports(ShareReports const&) = delete;
    ShareReports& operator=(ShareReports const&) = delete;

    void Add(std::weak_ptr<ShareEvents> const& observer);
    [[nodiscard]] bool IsUnderWay(Guid const& shareID) const;

    void Begin(ShareInfo const& share);
    void LinkReady(Guid const& shareID, Guid const& linkID, UTF16String const& url);
    void ExportWanted(Guid const& shareID, UTF16String const& path,
                      UTF16String const& processingID);
    /// It has its movie: it no longer hangs on the host.
    void BeginUpload(Guid const& shareID);
    void UploadProgressed(Guid const& shareID, double fraction);
    void Finish(Guid const& shareID);
    void Fail(Guid const& shareID, ShareFailure const& failure);
    /// The same, unless the share has its movie.
    void FailBeforeUpload(Guid const& shareID, ShareFailure const& failure);

private:
    using Event = std::function<void(ShareEvents&, ShareInfo const&)>;
    struct State {
        ShareInfo share;
        bool isUploading = false;
    };
    using States = std::map<Guid, State>;

    void Tell(Guid const& shareID, Event const& event);
    void TellLocked(ShareInfo const& share, Event const& event);
    void EndLocked(States::iterator state, Event const& event);

    mutable std::mutex mutex;
    States underWay;                                    // by the share's ID; guarded by mutex
    std::vector<std::weak_ptr<ShareEvents>> observers;  // guarded by mutex
};

}  // namespace quillomoxui
