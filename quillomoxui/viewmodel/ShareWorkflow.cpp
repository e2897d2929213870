// The road of a share: the operations of ShareForReviewViewModel that talk to the host and to the
// service.

#include <utility>

#include "moxcore/config/Error.h"
#include "moxcore/debug/DebugDatabase.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/filesupport/File.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/utility/FileUtils.h"
#include "quilloauth/AuthManager.h"
#include "quillocommon/Failures.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/client/QuilloClientIntegration.h"
#include "quillomoxui/model/operations/ReviewLinks.h"
#include "quillomoxui/model/operations/UploadToFolder.h"
#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillomoxui {

using model::QuilloClientIntegration;
using model::QuilloCppSdkIntegration;
using moxcore::filesupport::File;
using moxcore::string::AsciiToUTF16;
using moxcore::string::StdToUTF16String;
using moxcore::string::UTF16toStdString;
using moxcore::utility::Guid;

namespace {

/// In bytes of UTF-8. File systems take 255; a host may put a suffix behind the name of a file that
/// is not finished.
constexpr std::size_t kLongestFileName = 240;

constexpr char kUseQuilloCppSdk[] = "QuilloNative.UseQuilloCppSdk";

/// Views that a developer can have the popup open on, in the order in which the switches are tried.
constexpr std::pair<char const*, ShareForReviewViewID> kDebugViews[] = {
    {"UnifiedHeader.ShowQuilloNativeShareButtonDebugView", ShareForReviewViewID::DebugView},
    {"UnifiedHeader.ShowQuilloNativeShareButtonCopyLinkView",
     ShareForReviewViewID::CopyLinkSection},
    {"UnifiedHeader.ShowQuilloNativeShareButtonEncodingProgressView",
     ShareForReviewViewID::EncodingProgress},
};

bool IsSwitchedOn(char const* key, bool byDefault) {
    return moxcore::debug::DebugDatabase::Instance().GetEntryAs<bool>(key, byDefault);
}

UTF16String ToText(Guid const& id) {
    return StdToUTF16String(id.AsStdString());
}

void ReportNowhereToShareTo() {
    quillocommon::ReportFailure(
        {quillocommon::Step::CreateReviewLink, moxcore::config::kUnknownFailure, 0,
         "The movie was not shared: no location is chosen for it, or the one that was is gone; "
         "choose a location."});
}

}  // namespace

void ShareForReviewViewModel::StartShareForReviewPopup() {
    EnableCurrentViewIDMessages(true);
    for (auto const& [key, view] : kDebugViews)
        if (IsSwitchedOn(key, false)) return SetCurrentViewID(view);

    if (GetUser()->GetID().IsNull()) return SetCurrentViewID(ShareForReviewViewID::SigninPrompt);
    switch (GetEncodingStatus().status) {
        case EncodingStatus::Queued:
            return SetCurrentViewID(ShareForReviewViewID::WaitingInQueue);
        case EncodingStatus::Encoding:
            return SetCurrentViewID(ShareForReviewViewID::EncodingProgress);
        case EncodingStatus::Uploading:
            return SetCurrentViewID(ShareForReviewViewID::UploadInProgress);
        case EncodingStatus::UploadComplete:
            return SetCurrentViewID(ShareForReviewViewID::CopyLinkSection);
        default:
            return SetCurrentViewID(ShareForReviewViewID::ReviewInQuillo);
    }
}

void ShareForReviewViewModel::Login() {
    std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
    auto const signIn = BeginSignIn();
    auto const onProgress = [weak](quilloauth::SignInProgress const& progress) {
        if (auto const self = weak.lock()) self->SetSignInProgress(progress);
    };
    auto const takeUser = [weak, signIn](std::shared_ptr<QuilloUser> const& user,
                                         std::optional<ShareForReviewViewID> view = std::nullopt) {
        if (auto const self = weak.lock()) self->TakeUser(user, signIn, view);
    };
    if (!IsSwitchedOn(kUseQuilloCppSdk, true)) {
        // Uploads and review links take the SDK's client whichever backend fills the tree.
        QuilloCppSdkIntegration::FollowSession(onProgress);
        return QuilloClientIntegration::GetCurrentUser(
            [takeUser](auto const& user) { takeUser(user, ShareForReviewViewID::ReviewInQuillo); });
    }
    auto const onLoggedIn = [weak, signIn, takeUser](bool loggedIn) {
        auto const self = weak.lock();
        if (!self || !loggedIn || !self->TakeSignedIn(signIn)) return;
        QuilloCppSdkIntegration::GetCurrentUser([takeUser](auto const& user) { takeUser(user); });
    };
    QuilloCppSdkIntegration::SignIn(onLoggedIn, onProgress);
}

void ShareForReviewViewModel::CancelLogin() {
    // The sign-in under way may be another view model's.
    if (GetSignInProgress().IsUnderWay()) QuilloCppSdkIntegration::CancelSignIn();
}

void ShareForReviewViewModel::ReopenLoginPage() {
    if (GetSignInProgress().stage == quilloauth::SignInStage::InBrowser)
        quilloauth::jwt::ReopenBrowser();
}

void ShareForReviewViewModel::Logout() {
    static_cast<void>(BeginSignIn());  // what is under way is late from here on
    // That the other backend is signed out with this one, the session sees to.
    if (IsSwitchedOn(kUseQuilloCppSdk, true))
        QuilloCppSdkIntegration::SignOut();
    else
        QuilloClientIntegration::SignOut();
    SetIsLoggedIn(false);
    SetUser(std::make_shared<QuilloUser>());
}

void ShareForReviewViewModel::SetEncodingStatus(quillomoxui::EncodingStatus const& status) {
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
    bool sameAsset = false;
    {
        std::lock_guard lock(mutex);
        sameAsset = fields.assetID1 == first && fields.assetID2 == second;
        // Pressed twice: one link and one export are enough.
        if (sameAsset && fields.isLinkPending) return;
        fields.shareID = Guid::CreateUnique();
        fields.isLinkPending = false;
        fields.outputFilePath.clear();  // the file is the earlier share's
        fields.assetID1 = first;
        fields.assetID2 = second;
    }
    WriteAssetData(assetdata::kUploadFolderGuid, ToText(folder->GetID()));

    UTF16String stack;
    bool const hasVersionStack = ReadAssetData(assetdata::kVersionStackGuid, stack) &&
                                 !Guid(UTF16toStdString(stack)).IsNull();
    if (!hasVersionStack)
        WriteAssetData(assetdata::kVersionStackGuid, ToText(Guid::CreateUnique()));
    // A stack that an earlier, failed share left behind is as new as one made here: it is on no
    // link yet.
    bool const neverUploaded = ReadAssetGuid(assetdata::kUploadedAssetGuid).IsNull();
    {
        std::lock_guard lock(mutex);
        fields.isNewVersionStack =
            !hasVersionStack || neverUploaded || (sameAsset && fields.isNewVersionStack);
    }

    auto const linkID = ReadAssetGuid(assetdata::kReviewLinkGuid);
    UTF16String linkURL;
    ReadAssetData(assetdata::kReviewLinkURL, linkURL);
    if (!linkID.IsNull() && !linkURL.empty()) {
        SetReviewLinkURL(linkURL);
        return ProcessAssetForReview_Internal();
    }
    CreateLinkAndExport(project->GetID());
}

void ShareForReviewViewModel::CreateLinkAndExport(Guid const& projectID) {
    std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
    auto const userID = GetUser()->GetID();
    Fields share;
    {
        std::lock_guard lock(mutex);
        fields.isLinkPending = true;
        share = fields;
    }
    auto const endPending = [](ShareForReviewViewModel& self, Guid const& shareID) {
        std::lock_guard lock(self.mutex);
        if (self.fields.shareID == shareID) self.fields.isLinkPending = false;
    };
    bool const asked = model::CreateReviewLink(
        projectID, GetOutputFileName(),
        [weak, share, userID, endPending](bool ok, Guid const& linkID, UTF16String const& url) {
            auto const self = weak.lock();
            if (!self) return;
            endPending(*self, share.shareID);
            if (!ok) return;
            WriteAssetData(share, assetdata::kReviewLinkGuid, ToText(linkID));
            WriteAssetData(share, assetdata::kReviewLinkURL, url);
            if (!self->IsCurrent(share, userID))
                // Without an upload the next share of this asset takes its stack as new: nothing
                // is on the link yet.
                return WriteAssetData(share, assetdata::kUploadedAssetGuid, {});
            self->SetReviewLinkURL(url);
            {
                // Nothing is on a link that has just been made, an older version stack neither.
                std::lock_guard lock(self->mutex);
                self->fields.isNewVersionStack = true;
            }
            self->ProcessAssetForReview_Internal();
        });
    if (!asked) endPending(*this, share.shareID);
}

void ShareForReviewViewModel::ProcessAssetForReview_Internal() {
    SetEncodingStatus({EncodingStatus::Queued});
    SetEncodingProgress(0.0);
    auto const outputFilePath = GetOutputFileFullPath();
    auto const processingID = ToText(Guid::CreateUnique());
    {
        std::lock_guard lock(mutex);
        fields.outputFilePath = outputFilePath;
        fields.processingID = processingID;
    }
    CopyFields().assetProcessingMethod(outputFilePath, processingID);
}

UTF16String ShareForReviewViewModel::GetOutputFileName() {
    using namespace moxcore::utility::FileUtils;
    constexpr unsigned short kHyphen = 0x2D;
    auto const extension = AsciiToUTF16(".mp4");
    auto const legal = ReplaceIllegalFileNameCharacters(GetActiveAssetName(), kHyphen);
    return ShortenFileName(legal, kLongestFileName - extension.size()) + extension;
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

    std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
    auto const share = CopyFields();
    auto const userID = GetUser()->GetID();
    bool const started = model::UploadToFolder(
        share.outputFilePath, folderID, versionStackID,
        [weak, share, userID](double progress) {
            auto const self = weak.lock();
            if (self && self->IsCurrent(share, userID)) self->SetEncodingProgress(progress);
        },
        [weak, share, userID](bool ok, Guid const& assetID) {
            auto const self = weak.lock();
            if (!self) return;
            if (!self->IsCurrent(share, userID)) {
                if (ok) self->FinishOvertaken(share, assetID);
                return;
            }
            if (!ok) return self->SetEncodingStatus({EncodingStatus::UploadFailed});
            self->SetUploadedAssetID(assetID);
            self->SetEncodingStatus({EncodingStatus::UploadComplete});
        },
        [weak](std::optional<moxcore::threads::TimePoint> since) {
            if (auto const self = weak.lock()) self->SetUploadWaitingSince(since);
        });
    // Signed out meanwhile: the share can be tried again, which a status of Uploading would rule
    // out.
    if (!started) SetEncodingStatus({EncodingStatus::UploadFailed});
}

void ShareForReviewViewModel::FinalizeUpload() {
    auto const now = CopyFields();
    if (!now.isNewVersionStack) return DeleteOutputFileAndShowLink();

    auto const assetID = ReadAssetGuid(assetdata::kUploadedAssetGuid);
    auto const linkID = ReadAssetGuid(assetdata::kReviewLinkGuid);
    std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
    auto const userID = GetUser()->GetID();
    model::AddAssetToLink(assetID, linkID, [weak, share = now, userID](bool ok) {
        auto const self = weak.lock();
        if (!self) return;
        if (!self->IsCurrent(share, userID)) return self->EndOvertaken(share, ok);
        if (!ok) return;
        {
            std::lock_guard lock(self->mutex);
            if (self->fields.shareID == share.shareID) self->fields.isNewVersionStack = false;
        }
        self->DeleteOutputFileAndShowLink();
    });
}

void ShareForReviewViewModel::FinishOvertaken(Fields const& share, Guid const& uploadedID) {
    WriteAssetData(share, assetdata::kUploadedAssetGuid, ToText(uploadedID));
    if (!share.isNewVersionStack) return EndOvertaken(share, true);
    UTF16String link;
    share.getAssetDataMethod(share.assetID1, share.assetID2,
                             AsciiToUTF16(assetdata::kReviewLinkGuid), link);
    std::weak_ptr<ShareForReviewViewModel> const weak = Share(this);
    bool const asked =
        model::AddAssetToLink(uploadedID, Guid(UTF16toStdString(link)), [weak, share](bool ok) {
            if (auto const self = weak.lock()) self->EndOvertaken(share, ok);
        });
    if (!asked) EndOvertaken(share, false);
}

void ShareForReviewViewModel::EndOvertaken(Fields const& share, bool isOnLink) {
    // A failed addition leaves the stack off its link: the asset's next share has to add it.
    if (!isOnLink) return WriteAssetData(share, assetdata::kUploadedAssetGuid, {});
    auto const now = CopyFields();
    // The next share may be exporting to the same path.
    if (now.shareID == share.shareID || now.outputFilePath != share.outputFilePath)
        File(share.outputFilePath, 0).Delete();
}

void ShareForReviewViewModel::DeleteOutputFileAndShowLink() {
    File(CopyFields().outputFilePath, 0).Delete();
    SetCurrentViewID(ShareForReviewViewID::CopyLinkSection);
}

void ShareForReviewViewModel::SelectLocationAPI(std::shared_ptr<QuilloUser> const& user,
                                                SelectLocationCallback const& callback) {
    SetUser(user);
    {
        SelectLocationCallback replaced = callback;  // what it held dies after the lock
        std::lock_guard lock(mutex);
        fields.selectLocationCallback.swap(replaced);
        fields.locationPickerMode = LocationPickerMode::API;
    }
    SetInitialCurrentViewID(ShareForReviewViewID::SelectProject);
}

void ShareForReviewViewModel::LocationPickerSelectionCommitted() {
    auto const now = CopyFields();
    auto const user = GetUser();
    auto const selection = user->GetSelection();
    switch (now.locationPickerMode) {
        case LocationPickerMode::Share:
            if (selection) {
                Guid first;
                Guid second;
                now.getAssetIDsMethod(first, second);
                now.setAssetDataMethod(first, second, AsciiToUTF16(assetdata::kUploadFolderGuid),
                                       ToText(selection->GetID()));
            }
            return SetCurrentViewID(ShareForReviewViewID::ReviewInQuillo);
        case LocationPickerMode::API:
            SetCurrentViewID(ShareForReviewViewID::None);
            if (!now.selectLocationCallback) return;
            return selection
                       ? now.selectLocationCallback(selection->GetID(), user->GetSelectionPath())
                       : now.selectLocationCallback({}, {});
    }
}

void ShareForReviewViewModel::LocationPickerCancelled() {
    auto const now = CopyFields();
    switch (now.locationPickerMode) {
        case LocationPickerMode::Share:
            return SetCurrentViewID(ShareForReviewViewID::ReviewInQuillo);
        case LocationPickerMode::API:
            SetCurrentViewID(ShareForReviewViewID::None);
            if (now.selectLocationCallback) now.selectLocationCallback({}, {});
            return;
    }
}

}  // namespace quillomoxui
