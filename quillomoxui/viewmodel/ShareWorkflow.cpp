// The road of a share: the operations of ShareForReviewViewModel that talk to the host and to the
// service.

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

#include "moxcore/async/CancelledException.h"
#include "moxcore/config/Error.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/filesupport/File.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/utility/FileUtils.h"
#include "quillocommon/Failures.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/operations/ReviewLinks.h"
#include "quillomoxui/model/operations/UploadToFolder.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "quillomoxui/viewmodel/UnlinkedStacks.h"

namespace quillomoxui {

using moxcore::filesupport::File;
using moxcore::string::AsciiToUTF16;
using moxcore::string::StdToUTF16String;
using moxcore::string::UTF16toStdString;
using moxcore::utility::Guid;

namespace {

constexpr mode_t kOwnDirectory = 0700;

UTF16String ToText(Guid const& id) {
    return StdToUTF16String(id.AsStdString());
}

void ReportNowhereToShareTo() {
    quillocommon::ReportFailure(
        {quillocommon::Step::CreateReviewLink, moxcore::config::kUnknownFailure, 0,
         "The movie was not shared: no location is chosen for it, or the one that was is gone; "
         "choose a location."});
}

void ReportOtherUser() {
    quillocommon::ReportFailure(
        {quillocommon::Step::Upload, moxcore::config::kUnknownFailure, 0,
         "The movie was not uploaded: who has shared it has signed out; share it again."});
}

}  // namespace

// A share is what one press of the Share button begins. Its handlers hold the fields as they were
// then. What belongs to it alone (its asset's strings, its mark, its exported file) they change
// whatever has happened since; what is shown, the status and the fields belong to the current share
// of the current user. Where two things are checked and changed, that happens under the lock.

bool ShareForReviewViewModel::IsCurrentLocked(Fields const& share) const {
    return fields.shareID == share.shareID && (!share.shareUser || *share.shareUser == users);
}

/// Does `action`, which may set properties, unless another share has begun since, or another user
/// has come; whether it did.
template <class Action>
bool ShareForReviewViewModel::IfCurrent(Fields const& share, Action action) {
    std::lock_guard lock(mutex);
    if (!IsCurrentLocked(share)) return false;
    action();
    return true;
}

void ShareForReviewViewModel::SetEncodingStatus(quillomoxui::EncodingStatus const& status) {
    if (status.status == EncodingStatus::EncodingComplete) {
        // Of an export that has been overtaken or cancelled, or told once more.
        std::lock_guard lock(mutex);
        bool const isCancelled = fields.isCancelled && *fields.isCancelled;
        if (isCancelled || fields.isLinkPending || fields.isUploading) return;
    }
    EncodingStatusNotifyingPropertyHost::SetValue(status);
    switch (status.status) {
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

void ShareForReviewViewModel::ProcessAssetForReview() {
    auto const folder = GetUser()->GetSelection();
    auto const project = folder ? folder->FindSelfOrAncestorOfType<QuilloProject>() : nullptr;
    if (!project) return ReportNowhereToShareTo();

    Guid first;
    Guid second;
    CopyFields().getAssetIDsMethod(first, second);
    bool isStillNew = false;
    if (!BeginShare(first, second, isStillNew)) return;
    WriteAssetData(assetdata::kUploadFolderGuid, ToText(folder->GetID()));
    FindVersionStack(isStillNew);

    auto const linkID = ReadAssetGuid(assetdata::kReviewLinkGuid);
    UTF16String linkURL;
    ReadAssetData(assetdata::kReviewLinkURL, linkURL);
    if (!linkID.IsNull() && !linkURL.empty()) {
        SetReviewLinkURL(linkURL);
        return ProcessAssetForReview_Internal();
    }
    CreateLinkAndExport(project->GetID());
}

/// False when the same share waits for its link already: the button was pressed twice.
/// `isStillNew`: the asset was shared last, and its stack was not on its link.
bool ShareForReviewViewModel::BeginShare(Guid const& first, Guid const& second, bool& isStillNew) {
    std::lock_guard lock(mutex);
    bool const sameAsset = fields.assetID1 == first && fields.assetID2 == second;
    if (sameAsset && fields.isLinkPending && fields.shareUser == users) return false;
    isStillNew = sameAsset && fields.isNewVersionStack;
    fields.shareID = Guid::CreateUnique();
    fields.shareUser = users;
    fields.isLinkPending = false;
    fields.isUploading = false;
    fields.isCancelled = std::make_shared<std::atomic<bool>>(false);
    fields.outputFilePath.clear();  // the file is the earlier share's
    fields.assetID1 = first;
    fields.assetID2 = second;
    // What was shown of a share that is overtaken ends here: its own end shows nothing.
    switch (GetEncodingStatus().status) {
        case EncodingStatus::Queued:
        case EncodingStatus::Encoding:
        case EncodingStatus::Uploading:
            EncodingStatusNotifyingPropertyHost::SetValue({EncodingStatus::None});
            break;
        default:
            break;
    }
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
    auto const onLink = [weak, share, key](bool ok, Guid const& linkID, UTF16String const& url) {
        if (auto const self = weak.lock()) self->TakeLink(share, key, ok, linkID, url);
    };
    if (!model::CreateReviewLink(projectID, GetOutputFileName(), onLink))
        TakeLink(share, key, false, {}, {});
}

void ShareForReviewViewModel::TakeLink(Fields const& share, LinkKey const& key, bool ok,
                                       Guid const& linkID, UTF16String const& url) {
    if (ok) {
        // Nothing is on a link that has just been made, an older version stack neither.
        unlinkedstacks::Add(share.versionStackID);
        WriteAssetData(share, assetdata::kReviewLinkGuid, ToText(linkID));
        WriteAssetData(share, assetdata::kReviewLinkURL, url);
    }
    {
        std::lock_guard lock(mutex);
        pendingLinks.erase(key);
        bool const isWaitedFor =
            fields.isLinkPending && key == LinkKey(users, fields.assetID1, fields.assetID2);
        if (!isWaitedFor) return;
        fields.isLinkPending = false;
        if (!ok) return;
        fields.isNewVersionStack = true;
        ReviewLinkURLNotifyingPropertyHost::SetValue(url);
    }
    ProcessAssetForReview_Internal();
}

void ShareForReviewViewModel::ProcessAssetForReview_Internal() {
    SetEncodingStatus({EncodingStatus::Queued});
    SetEncodingProgress(0.0);
    ClaimOutputFile();
    auto const now = CopyFields();
    now.assetProcessingMethod(now.outputFilePath, now.processingID);
}

/// Names the file that the host is to export to. A movie that is being uploaded, or that the host
/// may still be writing for the share before, is not overwritten.
void ShareForReviewViewModel::ClaimOutputFile() {
    auto path = GetOutputFileFullPath();
    auto const processingID = ToText(Guid::CreateUnique());
    auto const ownDirectory =
        File(moxcore::filesupport::commondirs::UserCacheDir(), processingID).FullPath();
    bool isTaken = false;
    {
        std::lock_guard lock(mutex);
        auto const claim = fileClaims.find(path);
        isTaken = claim != fileClaims.end() && claim->second.shareID != fields.shareID;
        if (isTaken) path = File(File(ownDirectory, 0), GetOutputFileName()).FullPath();
        fields.outputFilePath = path;
        fields.processingID = processingID;
        // An export that has been overtaken never gets as far as its upload.
        std::erase_if(fileClaims, [](auto const& other) { return !other.second.isUploading; });
        fileClaims[path] = {fields.shareID};
    }
    // The host hears of a directory that is missing when it cannot write there.
    if (isTaken) mkdir(UTF16toStdString(ownDirectory).c_str(), kOwnDirectory);
}

UTF16String ShareForReviewViewModel::GetOutputFileName() {
    constexpr unsigned short kHyphen = 0x2D;
    return moxcore::utility::FileUtils::ReplaceIllegalFileNameCharacters(GetActiveAssetName(),
                                                                         kHyphen) +
           AsciiToUTF16(".mp4");
}

UTF16String ShareForReviewViewModel::GetOutputFileFullPath() {
    return File(moxcore::filesupport::commondirs::UserCacheDir(), GetOutputFileName()).FullPath();
}

void ShareForReviewViewModel::StartUpload() {
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
        fields.isUploading = true;
        share = fields;
        if (auto const claim = fileClaims.find(share.outputFilePath); claim != fileClaims.end())
            claim->second.isUploading = true;
    }
    // Nobody's movie goes out in somebody else's name.
    if (!isOfUser) {
        ReportOtherUser();
        {
            std::lock_guard lock(mutex);
            fields.isUploading = false;
            fileClaims.erase(share.outputFilePath);
        }
        return SetEncodingStatus({EncodingStatus::UploadFailed});
    }
    std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
    bool const started = model::UploadToFolder(
        share.outputFilePath, folderID, versionStackID,
        [weak, share](double progress) {
            if (share.isCancelled && *share.isCancelled)
                throw moxcore::async::CancelledException();  // ends the upload
            auto const self = weak.lock();
            if (self) self->IfCurrent(share, [&] { self->SetEncodingProgress(progress); });
        },
        [weak, share](bool ok, Guid const& assetID) {
            if (auto const self = weak.lock()) self->TakeUpload(share, ok, assetID);
        },
        [weak, share](std::optional<moxcore::threads::TimePoint> since) {
            auto const self = weak.lock();
            if (self) self->IfCurrent(share, [&] { self->SetUploadWaitingSince(since); });
        });
    // Signed out meanwhile: the share can be tried again, which a status of Uploading would rule
    // out.
    if (!started) TakeUpload(share, false, {});
}

void ShareForReviewViewModel::TakeUpload(Fields const& share, bool ok, Guid const& assetID) {
    if (ok) WriteAssetData(share, assetdata::kUploadedAssetGuid, ToText(assetID));
    bool isCurrent = false;
    {
        std::lock_guard lock(mutex);
        isCurrent = IsCurrentLocked(share);
        if (fields.shareID == share.shareID) fields.isUploading = false;
        // The file of an upload that has failed stays, and is the next share's to write over.
        if (!ok) fileClaims.erase(share.outputFilePath);
    }
    if (isCurrent || !share.shareUser)
        return SetEncodingStatus(
            {ok ? EncodingStatus::UploadComplete : EncodingStatus::UploadFailed});
    if (ok && !*share.isCancelled) return FinishOvertaken(share, assetID);
    ForgetStatus(share);
}

void ShareForReviewViewModel::FinalizeUpload() {
    auto const share = CopyFields();
    auto const showLink = [](ShareForReviewViewModel& self, Fields const& ended) {
        self.DeleteOutputFile(ended);
        self.SetCurrentViewID(ShareForReviewViewID::CopyLinkSection);
    };
    if (!share.isNewVersionStack) return showLink(*this, share);

    auto const assetID = ReadAssetGuid(assetdata::kUploadedAssetGuid);
    auto const linkID = ReadAssetGuid(assetdata::kReviewLinkGuid);
    std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
    model::AddAssetToLink(assetID, linkID, [weak, share, showLink](bool ok) {
        if (ok) unlinkedstacks::Remove(share.versionStackID);
        auto const self = weak.lock();
        if (!self) return;
        bool const isCurrent = self->IfCurrent(share, [&] {
            if (ok) self->fields.isNewVersionStack = false;
        });
        if (!isCurrent) return self->EndOvertaken(share, ok);
        if (ok) showLink(*self, share);
    });
}

/// What is left to do for a share whose movie is uploaded and that is not the current one any more.
void ShareForReviewViewModel::FinishOvertaken(Fields const& share, Guid const& uploadedID) {
    if (!share.isNewVersionStack) return EndOvertaken(share, true);
    UTF16String link;
    share.getAssetDataMethod(share.assetID1, share.assetID2,
                             AsciiToUTF16(assetdata::kReviewLinkGuid), link);
    std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
    bool const asked =
        model::AddAssetToLink(uploadedID, Guid(UTF16toStdString(link)), [weak, share](bool ok) {
            if (ok) unlinkedstacks::Remove(share.versionStackID);
            if (auto const self = weak.lock()) self->EndOvertaken(share, ok);
        });
    if (!asked) EndOvertaken(share, false);
}

void ShareForReviewViewModel::EndOvertaken(Fields const& share, bool isOnLink) {
    if (isOnLink) DeleteOutputFile(share);
    ForgetStatus(share);
}

/// A share that another user's coming has overtaken leaves no status that would never change.
void ShareForReviewViewModel::ForgetStatus(Fields const& share) {
    std::lock_guard lock(mutex);
    if (fields.shareID == share.shareID)
        EncodingStatusNotifyingPropertyHost::SetValue({EncodingStatus::None});
}

/// Deletes the share's exported file, unless a later share exports to the same place.
void ShareForReviewViewModel::DeleteOutputFile(Fields const& share) {
    {
        std::lock_guard lock(mutex);
        auto const claim = fileClaims.find(share.outputFilePath);
        if (claim != fileClaims.end()) {
            if (claim->second.shareID != share.shareID) return;
            fileClaims.erase(claim);
        }
    }
    File(share.outputFilePath, 0).Delete();
    auto const directory =
        std::filesystem::path(UTF16toStdString(share.outputFilePath)).parent_path();
    if (directory.filename() == UTF16toStdString(share.processingID)) rmdir(directory.c_str());
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
        fields.shareID = Guid::CreateUnique();
        fields.isLinkPending = false;
        fields.isUploading = false;
        fileClaims.erase(fields.outputFilePath);
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
