// The road of a share, first half: from the press of the button to the exported movie.

#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/config/Localizer.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/utility/FileUtils.h"
#include "quillocommon/Failures.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/operations/ShareSteps.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "quillomoxui/viewmodel/OutputFiles.h"
#include "quillomoxui/viewmodel/ShareSteps.inl"
#include "quillomoxui/viewmodel/UnlinkedStacks.h"

namespace quillomoxui {

using moxcore::config::Text;

using model::StepEnd;
using moxcore::string::AsciiToUTF16;
using moxcore::string::StdToUTF16String;
using moxcore::string::UTF16toStdString;
using moxcore::utility::Guid;

namespace {

constexpr char kCancelled[] =
    "$$$/Vistrel/quillomoxui/viewmodel/QuilloShare/Cancelled="
    "The share was cancelled.";

UTF16String ToText(Guid const& id) {
    return StdToUTF16String(id.AsStdString());
}

void ReportNowhereToShareTo() {
    quillocommon::ReportFailure(
        {quillocommon::Step::CreateReviewLink, moxcore::config::kUnknownFailure, 0,
         Text("$$$/Vistrel/quillomoxui/viewmodel/QuilloShare/NoLocation=The movie was not shared: "
              "no location is chosen for it, or the one that was is gone; choose a location.")});
}

}  // namespace

void ShareForReviewViewModel::SetEncodingStatus(quillomoxui::EncodingStatus const& status) {
    if (status.status == EncodingStatus::EncodingComplete) {
        // Of an export that has been overtaken or cancelled, or reported twice.
        std::lock_guard lock(mutex);
        bool const isCancelled = fields.isCancelled && *fields.isCancelled;
        if (isCancelled || fields.isLinkPending || fields.isUploading) return;
    }
    EncodingStatusNotifyingPropertyHost::SetValue(status);
    switch (status.status) {
        case EncodingStatus::None:
        case EncodingStatus::UploadFailed:
            return GiveUpExport();
        case EncodingStatus::Queued:
            return SetCurrentViewID(ShareForReviewViewID::WaitingInQueue);
        case EncodingStatus::Encoding:
            return SetCurrentViewID(ShareForReviewViewID::EncodingProgress);
        case EncodingStatus::EncodingComplete:
            return StartUpload();
        case EncodingStatus::UploadComplete:
            return FinalizeUpload();
        default:
            return;
    }
}

/// A share that waits for its movie gets none any more.
void ShareForReviewViewModel::GiveUpExport() {
    std::lock_guard lock(mutex);
    if (fields.isLinkPending) return;
    reports->FailBeforeUpload(fields.shareID,
                              {ShareFailureReason::NotExported,
                               Text("$$$/Vistrel/quillomoxui/viewmodel/QuilloShare/NotExported=The "
                                    "movie was not shared: the editor has not exported it.")});
    if (!fields.isUploading) outputFiles->Release(fields.shareID, fields.outputFilePath);
}

void ShareForReviewViewModel::ProcessAssetForReview() {
    auto const folder = GetUser()->GetSelection();
    auto const project = folder ? folder->FindSelfOrAncestorOfType<QuilloProject>() : nullptr;
    if (!project) return ReportNowhereToShareTo();

    Guid first;
    Guid second;
    CopyFields().getAssetIDsMethod(first, second);
    bool isStillNew = false;
    if (!BeginShare(first, second, isStillNew)) return;
    Guarded(CopyFields().shareID, [&] {
        WriteAssetData(assetdata::kUploadFolderGuid, ToText(folder->GetID()));
        FindVersionStack(isStillNew);
        FindLink(project->GetID());
    });
}

/// False when the same share waits for its link already: the button was pressed twice.
/// `isStillNew`: the asset was shared last, and its stack was not on its link.
bool ShareForReviewViewModel::BeginShare(Guid const& first, Guid const& second, bool& isStillNew) {
    std::lock_guard lock(mutex);
    bool const sameAsset = fields.assetID1 == first && fields.assetID2 == second;
    if (sameAsset && fields.isLinkPending && fields.shareUser == users) return false;
    isStillNew = sameAsset && fields.isNewVersionStack;
    reports->FailBeforeUpload(
        fields.shareID,
        {ShareFailureReason::Overtaken,
         Text("$$$/Vistrel/quillomoxui/viewmodel/QuilloShare/Overtaken=The movie was not shared: "
              "another share has begun before it was exported; share it again.")});
    fields.shareID = Guid::CreateUnique();
    fields.shareUser = users;
    fields.isLinkPending = false;
    fields.isUploading = false;
    fields.isCancelled = std::make_shared<std::atomic<bool>>(false);
    fields.outputFilePath.clear();  // the file is the earlier share's
    fields.assetID1 = first;
    fields.assetID2 = second;
    // The status of an overtaken share ends here: its own end shows nothing.
    switch (GetEncodingStatus().status) {
        case EncodingStatus::Queued:
        case EncodingStatus::Encoding:
        case EncodingStatus::Uploading:
            EncodingStatusNotifyingPropertyHost::SetValue({EncodingStatus::None});
            break;
        default:
            break;
    }
    reports->Begin({fields.shareID, first, second, GetActiveAssetName()});
    return true;
}

/// Finds or makes the asset's version stack, and whether it is new: not on the link yet.
void ShareForReviewViewModel::FindVersionStack(bool isStillNew) {
    UTF16String text;
    bool const isFound = ReadAssetData(assetdata::kVersionStackGuid, text);
    auto const stack = isFound ? Guid(UTF16toStdString(text)) : Guid::CreateUnique();
    if (!isFound) WriteAssetData(assetdata::kVersionStackGuid, ToText(stack));
    bool const isNew = !isFound || isStillNew || stack.IsNull() ||
                       ReadAssetGuid(assetdata::kUploadedAssetGuid).IsNull() ||
                       unlinkedstacks::Contains(stack);
    if (isNew) unlinkedstacks::Add(stack);
    std::lock_guard lock(mutex);
    fields.versionStackID = stack;
    fields.isNewVersionStack = isNew;
}

/// Goes on with the link that is stored with the asset, or has one made.
void ShareForReviewViewModel::FindLink(Guid const& projectID) {
    auto const linkID = ReadAssetGuid(assetdata::kReviewLinkGuid);
    UTF16String url;
    ReadAssetData(assetdata::kReviewLinkURL, url);
    if (linkID.IsNull() || url.empty()) return CreateLinkAndExport(projectID);
    SetReviewLinkURL(url);
    reports->LinkReady(CopyFields().shareID, linkID, url);
    ProcessAssetForReview_Internal();
}

void ShareForReviewViewModel::CreateLinkAndExport(Guid const& projectID) {
    Fields share;
    LinkKey key;
    {
        std::lock_guard lock(mutex);
        fields.isLinkPending = true;
        share = fields;
        key = {users, share.assetID1, share.assetID2};
        // The answer that an earlier share of this asset waits for is this one's as well.
        if (!pendingLinks.insert(key).second) return;
    }
    std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
    auto const onLink = [weak, share, key](StepEnd const& end, Guid const& linkID,
                                           UTF16String const& url) {
        if (auto const self = weak.lock()) self->TakeLink(share, key, end, linkID, url);
    };
    if (!model::MakeReviewLink({projectID, GetOutputFileName(), onLink}))
        TakeLink(share, key, model::NobodySignedIn(), {}, {});
}

void ShareForReviewViewModel::TakeLink(Fields const& share, LinkKey const& key, StepEnd const& end,
                                       Guid const& linkID, UTF16String const& url) {
    std::exception_ptr thrown;  // by the host; the share that waits ends with it
    if (end.IsDone()) try {
            // Nothing is on a link that has just been made, an older version stack neither.
            unlinkedstacks::Add(share.versionStackID);
            WriteAssetData(share, assetdata::kReviewLinkGuid, ToText(linkID));
            WriteAssetData(share, assetdata::kReviewLinkURL, url);
        } catch (...) {
            thrown = std::current_exception();
        }
    Guid waiting;
    {
        std::lock_guard lock(mutex);
        pendingLinks.erase(key);
        bool const isWaitedFor =
            fields.isLinkPending && key == LinkKey(users, fields.assetID1, fields.assetID2);
        if (isWaitedFor) {
            waiting = fields.shareID;
            fields.isLinkPending = false;
        }
        if (isWaitedFor && end.IsDone() && !thrown) {
            fields.isNewVersionStack = true;
            ReviewLinkURLNotifyingPropertyHost::SetValue(url);
        }
    }
    Guarded(waiting, [&] {
        if (thrown) std::rethrow_exception(thrown);
        if (waiting.IsNull()) return;
        if (!end.IsDone()) return FailShare(waiting, ShareFailureReason::NoLink, end);
        reports->LinkReady(waiting, linkID, url);
        ProcessAssetForReview_Internal();
    });
}

void ShareForReviewViewModel::ProcessAssetForReview_Internal() {
    SetEncodingStatus({EncodingStatus::Queued});
    SetEncodingProgress(0.0);
    auto const shareID = CopyFields().shareID;
    auto const output = outputFiles->Claim(shareID, GetOutputFileName());
    AssetProcessingMethod process;
    {
        std::lock_guard lock(mutex);
        fields.outputFilePath = output.path;
        fields.processingID = output.processingID;
        process = fields.assetProcessingMethod;
    }
    reports->ExportWanted(shareID, output.path, output.processingID);
    process(output.path, output.processingID);
}

UTF16String ShareForReviewViewModel::GetOutputFileName() {
    constexpr unsigned short kHyphen = 0x2D;
    return moxcore::utility::FileUtils::ReplaceIllegalFileNameCharacters(GetActiveAssetName(),
                                                                         kHyphen) +
           AsciiToUTF16(".mp4");
}

UTF16String ShareForReviewViewModel::GetOutputFileFullPath() {
    return OutputFiles::PathOf(GetOutputFileName());
}

void ShareForReviewViewModel::CancelShare() {
    auto const status = GetEncodingStatus().status;
    bool const isUnderWay =
        status == EncodingStatus::Queued || status == EncodingStatus::Encoding ||
        status == EncodingStatus::EncodingComplete || status == EncodingStatus::Uploading;
    {
        std::lock_guard lock(mutex);
        if (!fields.isCancelled || !(isUnderWay || fields.isLinkPending)) return;
        *fields.isCancelled = true;
        outputFiles->Release(fields.shareID, fields.outputFilePath);
        reports->Fail(fields.shareID, {ShareFailureReason::Cancelled, Text(kCancelled)});
        fields.shareID = Guid::CreateUnique();
        fields.isLinkPending = false;
        fields.isUploading = false;
    }
    EncodingStatusNotifyingPropertyHost::SetValue({EncodingStatus::None});
    SetEncodingProgress(0.0);
    SetUploadWaitingSince({});
    switch (GetCurrentViewID()) {
        case ShareForReviewViewID::WaitingInQueue:
        case ShareForReviewViewID::EncodingProgress:
        case ShareForReviewViewID::UploadInProgress:
            return SetCurrentViewID(ShareForReviewViewID::ReviewInQuillo);
        default:
            return;
    }
}

}  // namespace quillomoxui
