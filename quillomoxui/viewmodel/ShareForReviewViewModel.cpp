#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

#include <array>
#include <cstddef>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/utility/ThrowFatalError.h"
#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "quillomoxui/viewmodel/OutputFiles.h"
#include "quillomoxui/viewmodel/SelectionKeeper.h"
#include "quillomoxui/viewmodel/ShareReports.h"

namespace quillomoxui {

using moxcore::config::Text;

namespace {

constexpr char kSignedOut[] =
    "$$$/Vistrel/quillomoxui/viewmodel/QuilloShare/NotSharedSignedOut="
    "The movie was not shared: who has shared it has signed out; share it again.";

}  // namespace

using moxcore::string::AsciiToUTF16;
using moxcore::string::StdToUTF16String;

ShareForReviewViewModel::ShareForReviewViewModel()
    : outputFiles(std::make_unique<OutputFiles>()), reports(std::make_unique<ShareReports>()) {
    ShareForReviewViewModel::SetUser(std::make_shared<QuilloUser>());
}

ShareForReviewViewModel::~ShareForReviewViewModel() = default;

void ShareForReviewViewModel::SetUser(std::shared_ptr<QuilloUser> const& user) {
    TakeUser(user, std::nullopt, std::nullopt);
}

/// Puts `newUser` in the place of the user, then shows `view`. Nothing happens when it is what
/// `signIn` has brought, and that is late.
void ShareForReviewViewModel::TakeUser(std::shared_ptr<QuilloUser> const& newUser,
                                       std::optional<unsigned> signIn,
                                       std::optional<ShareForReviewViewID> view) {
    if (!newUser)
        ThrowFatalError(
            "$$$/Vistrel/quillomoxui/viewmodel/QuilloShare/NoNullUser="
            "Contract violation: User property may not be set to null.");
    auto keeper = std::make_shared<SelectionKeeper>(newUser);
    keeper->Start();
    std::shared_ptr<QuilloUser> replaced;  // dies after the lock, as does the keeper before
    {
        // Held across the change, so that no sign-out slips in between the question and the answer.
        std::lock_guard lock(mutex);
        if (signIn && *signIn != signIns) return;
        ++signIns;
        replaced = GetUser();
        if (!replaced || replaced->GetID() != newUser->GetID()) {
            ++users;
            // Its link would be another user's.
            if (fields.isLinkPending)
                reports->Fail(fields.shareID, {ShareFailureReason::OtherUser, Text(kSignedOut)});
        }
        UserNotifyingPropertyHost::SetValue(newUser);
        selectionKeeper.swap(keeper);
        if (view && fields.currentViewIDMessagesEnabled)
            CurrentViewIDNotifyingPropertyHost::SetValue(*view);
    }
    newUser->FetchChildren();
}

unsigned ShareForReviewViewModel::BeginSignIn() {
    std::lock_guard lock(mutex);
    return ++signIns;
}

/// Sets IsLoggedIn, unless `signIn` is late; whether it was not.
bool ShareForReviewViewModel::TakeSignedIn(unsigned signIn) {
    std::lock_guard lock(mutex);
    if (signIn != signIns) return false;
    IsLoggedInNotifyingPropertyHost::SetValue(true);
    return true;
}

void ShareForReviewViewModel::SetCurrentViewID(ShareForReviewViewID id) {
    // Held across the change, so that no view slips in behind the None that closes the popup.
    std::lock_guard lock(mutex);
    if (fields.currentViewIDMessagesEnabled) CurrentViewIDNotifyingPropertyHost::SetValue(id);
    if (id == ShareForReviewViewID::None) fields.currentViewIDMessagesEnabled = false;
}

void ShareForReviewViewModel::EnableCurrentViewIDMessages(bool enable) {
    std::lock_guard lock(mutex);
    fields.currentViewIDMessagesEnabled = enable;
}

void ShareForReviewViewModel::SetAssetProcessingMethod(AssetProcessingMethod const& method) {
    AssetProcessingMethod replaced = method;  // what it held dies after the lock
    std::lock_guard lock(mutex);
    fields.assetProcessingMethod.swap(replaced);
}

void ShareForReviewViewModel::SetAssetDataMethods(GetAssetIDsMethod const& getIDs,
                                                  GetAssetDataMethod const& getData,
                                                  SetAssetDataMethod const& setData) {
    GetAssetIDsMethod replacedIDs = getIDs;  // what they held dies after the lock
    GetAssetDataMethod replacedGet = getData;
    SetAssetDataMethod replacedSet = setData;
    std::lock_guard lock(mutex);
    fields.getAssetIDsMethod.swap(replacedIDs);
    fields.getAssetDataMethod.swap(replacedGet);
    fields.setAssetDataMethod.swap(replacedSet);
}

void ShareForReviewViewModel::ObserveShares(std::weak_ptr<ShareEvents> const& observer) {
    reports->Add(observer);
}

bool ShareForReviewViewModel::IsShareUnderWay() const {
    std::lock_guard lock(mutex);
    return reports->IsUnderWay(fields.shareID);
}

void ShareForReviewViewModel::SetUploadedAssetID(Guid const& id) {
    WriteAssetData(assetdata::kUploadedAssetGuid, StdToUTF16String(id.AsStdString()));
}

ShareForReviewViewModel::Fields ShareForReviewViewModel::CopyFields() const {
    std::lock_guard lock(mutex);
    return fields;
}

bool ShareForReviewViewModel::ReadAssetData(char const* key, UTF16String& value) const {
    auto const now = CopyFields();
    return now.getAssetDataMethod(now.assetID1, now.assetID2, AsciiToUTF16(key), value);
}

moxcore::utility::Guid ShareForReviewViewModel::ReadAssetGuid(char const* key) const {
    return ReadAssetGuid(CopyFields(), key);
}

moxcore::utility::Guid ShareForReviewViewModel::ReadAssetGuid(Fields const& share,
                                                              char const* key) {
    UTF16String text;
    share.getAssetDataMethod(share.assetID1, share.assetID2, AsciiToUTF16(key), text);
    return Guid(moxcore::string::UTF16toStdString(text));
}

void ShareForReviewViewModel::WriteAssetData(char const* key, UTF16String const& value) const {
    WriteAssetData(CopyFields(), key, value);
}

void ShareForReviewViewModel::WriteAssetData(Fields const& share, char const* key,
                                             UTF16String const& value) {
    share.setAssetDataMethod(share.assetID1, share.assetID2, AsciiToUTF16(key), value);
}

UTF16String const& ShareForReviewViewIDAsString(ShareForReviewViewID id) {
    static std::array<UTF16String, 8> const names = {
        AsciiToUTF16("None"),         AsciiToUTF16("DebugView"),
        AsciiToUTF16("Initial"),      AsciiToUTF16("SelectProject"),
        AsciiToUTF16("SelectFolder"), AsciiToUTF16("ReviewInQuillo"),
        AsciiToUTF16("SigninPrompt"), AsciiToUTF16("CopyLinkSection")};
    static UTF16String const encodingProgress = AsciiToUTF16("EncodingProgress");
    static UTF16String const unknown = AsciiToUTF16("(unknown ShareForReviewViewID value)");

    auto const value = static_cast<std::size_t>(id);
    if (value < names.size()) return names[value];
    return id == ShareForReviewViewID::EncodingProgress ? encodingProgress : unknown;
}

}  // namespace quillomoxui
