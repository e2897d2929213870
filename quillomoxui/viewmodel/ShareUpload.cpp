// The road of a share, second half: from the exported movie to the link that is shown.

#include <exception>

#include "moxcore/async/CancelledException.h"
#include "moxcore/config/Error.h"
#include "moxcore/config/Localizer.h"
#include "moxcore/string/Conversions.h"
#include "quillocommon/Failures.h"
#include "quillomoxui/model/operations/ShareSteps.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "quillomoxui/viewmodel/OutputFiles.h"
#include "quillomoxui/viewmodel/ShareSteps.inl"
#include "quillomoxui/viewmodel/UnlinkedStacks.h"

namespace quillomoxui {

using moxcore::config::Text;

using model::StepEnd;

namespace {

constexpr char kCalledOff[] =
    "$$$/Vistrel/quillomoxui/viewmodel/QuilloShare/CalledOff="
    "The share was called off.";

constexpr char kOtherUser[] =
    "$$$/Vistrel/quillomoxui/viewmodel/QuilloShare/NotUploadedSignedOut=The movie was not "
    "uploaded: who has shared it has signed out; share it again.";

}  // namespace

bool ShareForReviewViewModel::IsCurrentLocked(Fields const& share) const {
    return fields.shareID == share.shareID && (!share.shareUser || *share.shareUser == users);
}

/// Ends a share with a step that has not succeeded; `reason` when the service has refused.
void ShareForReviewViewModel::FailShare(Guid const& shareID, ShareFailureReason reason,
                                        StepEnd const& end) {
    bool const isCalledOff = end.kind == StepEnd::Kind::CalledOff;
    reports->Fail(shareID, {isCalledOff ? ShareFailureReason::LibraryClosed : reason,
                            isCalledOff ? Text(kCalledOff) : end.why});
}

void ShareForReviewViewModel::StartUpload() {
    Guarded(CopyFields().shareID, [this] { Upload(); });
}

void ShareForReviewViewModel::Upload() {
    auto const folderID = ReadAssetGuid(assetdata::kUploadFolderGuid);
    auto const versionStackID = ReadAssetGuid(assetdata::kVersionStackGuid);
    SetEncodingStatus({EncodingStatus::Uploading});
    SetEncodingProgress(0.0);
    SetUploadWaitingSince({});
    SetCurrentViewID(ShareForReviewViewID::UploadInProgress);

    Fields share;
    bool isOfUser = false;
    {
        std::lock_guard lock(mutex);
        isOfUser = IsCurrentLocked(fields);
        fields.isUploading = isOfUser;
        share = fields;
    }
    // Nobody's movie goes out in somebody else's name.
    if (!isOfUser) {
        quillocommon::ReportFailure(
            {quillocommon::Step::Upload, moxcore::config::kUnknownFailure, 0, Text(kOtherUser)});
        reports->Fail(share.shareID, {ShareFailureReason::OtherUser, Text(kOtherUser)});
        outputFiles->Release(share.shareID, share.outputFilePath);
        return SetEncodingStatus({EncodingStatus::UploadFailed});
    }
    outputFiles->NoteUpload(share.shareID, share.outputFilePath);
    reports->BeginUpload(share.shareID);
    std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
    auto const onProgress = [weak, share](double progress) {
        if (share.isCancelled && *share.isCancelled)
            throw moxcore::async::CancelledException();  // ends the upload
        auto const self = weak.lock();
        if (!self) return;
        self->IfCurrent(share, [&] { self->SetEncodingProgress(progress); });
        self->reports->UploadProgressed(share.shareID, progress);
    };
    auto const onWaiting = [weak, share](std::optional<moxcore::threads::TimePoint> since) {
        auto const self = weak.lock();
        if (self) self->IfCurrent(share, [&] { self->SetUploadWaitingSince(since); });
    };
    auto const onEnd = [weak, share](StepEnd const& end, Guid const& assetID) {
        if (auto const self = weak.lock()) self->TakeUpload(share, end, assetID);
    };
    bool const started = model::UploadMovie({.path = share.outputFilePath,
                                             .folderID = folderID,
                                             .versionStackID = versionStackID,
                                             .progress = onProgress,
                                             .waiting = onWaiting,
                                             .completion = onEnd});
    // Signed out meanwhile: the share can be tried again, which a status of Uploading would rule
    // out.
    if (!started) TakeUpload(share, model::NobodySignedIn(), {});
}

void ShareForReviewViewModel::TakeUpload(Fields const& share, StepEnd const& end,
                                         Guid const& assetID) {
    if (end.kind == StepEnd::Kind::CalledOff)
        return FailShare(share.shareID, ShareFailureReason::NotUploaded, end);
    std::exception_ptr thrown;  // by the host
    if (end.IsDone()) try {
            Guarded(share.shareID, [&] {
                WriteAssetData(share, assetdata::kUploadedAssetGuid,
                               moxcore::string::StdToUTF16String(assetID.AsStdString()));
            });
        } catch (...) {
            thrown = std::current_exception();
        }
    bool const ok = end.IsDone() && !thrown;
    // The file stays, and is the next share's to write over.
    if (!ok) outputFiles->Release(share.shareID, share.outputFilePath);
    {
        std::lock_guard lock(mutex);
        if (fields.shareID == share.shareID) fields.isUploading = false;
        if (IsCurrentLocked(share))
            EncodingStatusNotifyingPropertyHost::SetValue(
                {ok ? EncodingStatus::UploadComplete : EncodingStatus::UploadFailed});
    }
    bool const isCancelled = share.isCancelled && *share.isCancelled;
    if (ok && !isCancelled) return PutMovieOnLink(share);
    ForgetStatus(share);
    if (thrown) std::rethrow_exception(thrown);
    if (!ok) FailShare(share.shareID, ShareFailureReason::NotUploaded, end);
}

void ShareForReviewViewModel::FinalizeUpload() {
    PutMovieOnLink(CopyFields());
}

/// The last step, also of a share that is not the current one any more.
void ShareForReviewViewModel::PutMovieOnLink(Fields const& share) {
    if (!share.isNewVersionStack) return EndShare(share, {});
    Guarded(share.shareID, [&] {
        auto const assetID = ReadAssetGuid(share, assetdata::kUploadedAssetGuid);
        auto const linkID = ReadAssetGuid(share, assetdata::kReviewLinkGuid);
        std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
        bool const asked = model::PutOnLink(assetID, linkID, [weak, share](StepEnd const& end) {
            if (end.IsDone()) unlinkedstacks::Remove(share.versionStackID);
            if (auto const self = weak.lock()) self->EndShare(share, end);
        });
        if (!asked) EndShare(share, model::NobodySignedIn());
    });
}

void ShareForReviewViewModel::EndShare(Fields const& share, StepEnd const& end) {
    bool const isOnLink = end.IsDone();
    bool const isCurrent = IfCurrent(share, [&] {
        if (isOnLink) fields.isNewVersionStack = false;
    });
    if (isOnLink) outputFiles->Delete(share.shareID, {share.outputFilePath, share.processingID});
    if (!isCurrent) ForgetStatus(share);
    if (!isOnLink) return FailShare(share.shareID, ShareFailureReason::NotOnLink, end);
    if (isCurrent) SetCurrentViewID(ShareForReviewViewID::CopyLinkSection);
    reports->Finish(share.shareID);
}

/// A share that another user's coming has overtaken leaves no status that would never change.
void ShareForReviewViewModel::ForgetStatus(Fields const& share) {
    std::lock_guard lock(mutex);
    if (fields.shareID == share.shareID && !IsCurrentLocked(share))
        EncodingStatusNotifyingPropertyHost::SetValue({EncodingStatus::None});
}

}  // namespace quillomoxui
