#include "quillomoxui/viewmodel/ShareReports.h"

#include "moxcore/config/Localizer.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"

namespace quillomoxui {

using moxcore::config::Text;

ShareEvents::~ShareEvents() = default;
void ShareEvents::ShareBegan(ShareInfo const& /*share*/) {}
void ShareEvents::LinkReady(ShareInfo const& /*share*/, moxcore::utility::Guid const& /*linkID*/,
                            UTF16String const& /*url*/) {}
void ShareEvents::ExportWanted(ShareInfo const& /*share*/, UTF16String const& /*outputFilePath*/,
                               UTF16String const& /*processingID*/) {}
void ShareEvents::UploadProgressed(ShareInfo const& /*share*/, double /*fraction*/) {}
void ShareEvents::ShareFinished(ShareInfo const& /*share*/) {}
void ShareEvents::ShareFailed(ShareInfo const& /*share*/, ShareFailure const& /*failure*/) {}

ShareReports::~ShareReports() {
    ShareFailure const closed{ShareFailureReason::LibraryClosed,
                              Text("$$$/Vistrel/quillomoxui/viewmodel/QuilloShare/ProgramEnded=The "
                                   "share was stopped with the program that shares.")};
    std::lock_guard lock(mutex);
    for (auto const& [id, state] : underWay)
        TellLocked(state.share, [closed](auto& observer, auto const& share) {
            observer.ShareFailed(share, closed);
        });
}

void ShareReports::Add(std::weak_ptr<ShareEvents> const& observer) {
    std::lock_guard lock(mutex);
    std::erase_if(observers, [](auto const& other) { return other.expired(); });
    observers.push_back(observer);
}

bool ShareReports::IsUnderWay(Guid const& shareID) const {
    std::lock_guard lock(mutex);
    return underWay.contains(shareID);
}

void ShareReports::Begin(ShareInfo const& share) {
    std::lock_guard lock(mutex);
    underWay.insert_or_assign(share.shareID, State{share});
    TellLocked(share, &ShareEvents::ShareBegan);
}

void ShareReports::LinkReady(Guid const& shareID, Guid const& linkID, UTF16String const& url) {
    Tell(shareID,
         [=](auto& observer, auto const& share) { observer.LinkReady(share, linkID, url); });
}

void ShareReports::ExportWanted(Guid const& shareID, UTF16String const& path,
                                UTF16String const& processingID) {
    Tell(shareID, [=](auto& observer, auto const& share) {
        observer.ExportWanted(share, path, processingID);
    });
}

void ShareReports::BeginUpload(Guid const& shareID) {
    std::lock_guard lock(mutex);
    if (auto const found = underWay.find(shareID); found != underWay.end())
        found->second.isUploading = true;
}

void ShareReports::UploadProgressed(Guid const& shareID, double fraction) {
    Tell(shareID,
         [=](auto& observer, auto const& share) { observer.UploadProgressed(share, fraction); });
}

void ShareReports::Finish(Guid const& shareID) {
    std::lock_guard lock(mutex);
    EndLocked(underWay.find(shareID), &ShareEvents::ShareFinished);
}

void ShareReports::Fail(Guid const& shareID, ShareFailure const& failure) {
    std::lock_guard lock(mutex);
    EndLocked(underWay.find(shareID), [failure](auto& observer, auto const& share) {
        observer.ShareFailed(share, failure);
    });
}

void ShareReports::FailBeforeUpload(Guid const& shareID, ShareFailure const& failure) {
    std::lock_guard lock(mutex);
    auto const found = underWay.find(shareID);
    if (found == underWay.end() || found->second.isUploading) return;
    EndLocked(found, [failure](auto& observer, auto const& share) {
        observer.ShareFailed(share, failure);
    });
}

void ShareReports::Tell(Guid const& shareID, Event const& event) {
    std::lock_guard lock(mutex);
    if (auto const found = underWay.find(shareID); found != underWay.end())
        TellLocked(found->second.share, event);
}

/// Posted under the lock, so that observers are notified in the order of the events.
void ShareReports::TellLocked(ShareInfo const& share, Event const& event) {
    if (observers.empty()) return;
    moxcore::threads::AsyncCallFromMainThread(
        [share, event, receivers = observers] {
            for (auto const& receiver : receivers)
                if (auto const observer = receiver.lock()) event(*observer, share);
        },
        0);
}

void ShareReports::EndLocked(States::iterator state, Event const& event) {
    if (state == underWay.end()) return;
    TellLocked(state->second.share, event);
    underWay.erase(state);
}

}  // namespace quillomoxui
