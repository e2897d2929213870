#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <tuple>

#include "quillomoxui/Export.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"
#include "quillomoxui/viewmodel/LocationPickerMode.h"
#include "quillomoxui/viewmodel/ShareEvents.h"

namespace quillomoxui {

class OutputFiles;
class SelectionKeeper;
class ShareReports;

namespace model {
struct StepEnd;
}

/// The one object that a host makes and drives: what the share popup shows, and the road of a share
/// from the sign-in to the link that can be copied. Make it with std::make_shared and keep it until
/// the share has ended; an operation that outlives it does nothing more.
///
/// Set by the host: ActiveAssetName, the movie's name without an extension (".mp4" is appended);
/// AssetTypeIcon; EncodingProgress while it exports, from 0 to 1 and not in percent;
/// EncodingStatus, which says also what to set when an export has failed and before the next share.
/// For the host to observe: SignInProgress, and UploadWaitingSince, the time since which an
/// upload has waited for a service that is not available, none while it does not; it goes on by
/// itself. Observers (ObserveShares) learn how each share goes and ends.
///
/// Threads: the host calls it on the main thread. Answers of the service arrive on worker threads
/// and move the workflow there; so the host's callbacks may be called on any thread, one at a time
/// for one share. They are never called under a lock. Properties notify on the main thread.
///
/// Errors: what the service refuses changes nothing here but EncodingStatus; the observers of the
/// share learn why, as do the failure listeners (quillocommon/Failures.h). A host callback
/// that is empty when it is needed is a std::bad_function_call.
class QUILLO_API ShareForReviewViewModel : public UserNotifyingPropertyHost,
                                           public CurrentViewIDNotifyingPropertyHost,
                                           public ActiveAssetNameNotifyingPropertyHost,
                                           public ReviewLinkURLNotifyingPropertyHost,
                                           public IsLoggedInNotifyingPropertyHost,
                                           public EncodingStatusNotifyingPropertyHost,
                                           public EncodingProgressNotifyingPropertyHost,
                                           public AssetTypeIconNotifyingPropertyHost,
                                           public SignInProgressNotifyingPropertyHost,
                                           public UploadWaitingSinceNotifyingPropertyHost {
public:
    /// The library's type of identifiers.
    using Guid = moxcore::utility::Guid;

    /// Exports the asset to `outputFilePath` and reports how far that is through SetEncodingStatus.
    /// `processingID` names this export.
    using AssetProcessingMethod =
        std::function<void(UTF16String const& outputFilePath, UTF16String const& processingID)>;
    /// Names the asset being shared; both Guids are null on entry. Asked when Share is pressed, and
    /// also when a location is chosen in the popup. The result is ignored: the Guids as they are
    /// then name the asset.
    using GetAssetIDsMethod = std::function<bool(Guid& first, Guid& second)>;
    /// Reads a string stored with an asset; true when there is one.
    using GetAssetDataMethod = std::function<bool(Guid const& first, Guid const& second,
                                                  UTF16String const& key, UTF16String& value)>;
    /// Stores a string with an asset. The result is ignored: a host that cannot store it informs
    /// its user itself.
    using SetAssetDataMethod = std::function<bool(
        Guid const& first, Guid const& second, UTF16String const& key, UTF16String const& value)>;
    /// Receives the folder chosen and its display path; the null Guid and nothing when none was.
    using SelectLocationCallback =
        std::function<void(Guid const& folderID, UTF16String const& path)>;

    /// With an empty user: nobody is signed in.
    ShareForReviewViewModel();
    ~ShareForReviewViewModel() override;

    /// Replaces the user and has it fetch its tree. When lists are fetched again, its selection
    /// goes over to the new folder of the same ID; when that is gone, there is none from then on
    /// (QuilloUser::GetLostSelectionPath). What is still to come of a sign-in is dropped. A null
    /// user breaks the contract.
    void SetUser(std::shared_ptr<QuilloUser> const& user) override;

    /// Signs in; the user follows when the service has said who it is, unless something else is
    /// asked for by then: another Login, a Logout, another user. The view is left to the
    /// observers of IsLoggedIn. With the developer's switch "QuilloNative.UseQuilloCppSdk" set to
    /// false, the user and the tree come from the older client library instead, and the tree
    /// follows the service's changes; IsLoggedIn is left alone then, and the view is moved on here.
    /// Uploads and links then use the same session.
    virtual void Login();

    /// Gives up a Login that waits (SignInProgress). Nothing happens when none does.
    void CancelLogin();
    /// Shows the sign-in page in the browser once more while a Login waits for it. Nothing happens
    /// when none does.
    void ReopenLoginPage();

    /// Signs out and forgets the user's tree. The view stays.
    virtual void Logout();

    /// Reports how far the export is. Stores the status and takes the step that it calls for: shows
    /// the view of `Queued` and `Encoding`, starts the upload on `EncodingComplete`, finishes the
    /// share on `UploadComplete`.
    void SetEncodingStatus(quillomoxui::EncodingStatus const& status) override;

    /// Moves the popup to a view. Once that has been None, everything is swallowed until
    /// StartShareForReviewPopup or EnableCurrentViewIDMessages.
    void SetCurrentViewID(ShareForReviewViewID id) override;

    /// Makes this object serve the location picker alone: `callback` receives the outcome, once.
    virtual void SelectLocationAPI(std::shared_ptr<QuilloUser> const& user,
                                   SelectLocationCallback const& callback);

    /// The picker's Choose and Cancel, after it has committed or reset the user's selection.
    virtual void LocationPickerSelectionCommitted();
    /// See LocationPickerSelectionCommitted.
    virtual void LocationPickerCancelled();

    /// Call each time the popup is to be opened: shows the view that the state of the share calls
    /// for, and with it the popup's window, where there is a screen manager.
    void StartShareForReviewPopup();

    /// Whether SetCurrentViewID has an effect. A view of None switches it off.
    void EnableCurrentViewIDMessages(bool enable);

    /// The host's export. Set it before the first share.
    void SetAssetProcessingMethod(AssetProcessingMethod const& method);
    /// Where the library keeps its strings for each asset (AssetDataKeys.h).
    void SetAssetDataMethods(GetAssetIDsMethod const& getIDs, GetAssetDataMethod const& getData,
                             SetAssetDataMethod const& setData);

    /// Adds an observer, which is held weakly. It receives all events of shares that begin from now
    /// on, and the remaining ones of shares under way; none after its last owner has dropped it on
    /// the main thread. Any number of observers. Any thread.
    void ObserveShares(std::weak_ptr<ShareEvents> const& observer);

    /// Whether the last share that began has not ended. The event of its end may still be on its
    /// way to the observers.
    [[nodiscard]] bool IsShareUnderWay() const;

    /// The Share button: shares the active asset into the user's selection. Without a selection in
    /// a project nothing happens, and the failure listeners are notified.
    void ProcessAssetForReview();

    // The steps of a share, one by one. Observers are notified only of shares that
    // ProcessAssetForReview has begun, not of a step that a host takes outside a share.

    /// The step after the link is there: has the host export the asset.
    void ProcessAssetForReview_Internal();

    /// The step after the export: uploads the file.
    void StartUpload();

    /// The step after the upload: puts the asset on its link, deletes the file, shows the link.
    void FinalizeUpload();

    /// Ends the share under way: one that waits for its link or for the export goes no further, and
    /// an upload stops soon. The host ends its own export. The status is None then, and a popup
    /// that shows the progress goes back to the form. The exported file stays, the service keeps
    /// for a while what it has of it, and a link that is on its way is kept for the asset's next
    /// share. Nothing happens when no share is under way, or when its movie is uploaded already.
    void CancelShare();

    /// The active asset's name as a file name, with ".mp4": without what may not stand in one, and
    /// cut to 255 bytes of UTF-8.
    [[nodiscard]] UTF16String GetOutputFileName();

    /// Where the host is to export to, in the user's cache directory. An export that would
    /// overwrite a movie which is still being shared goes to a directory of its own below that.
    [[nodiscard]] UTF16String GetOutputFileFullPath();

    /// Stores the ID of the asset's last upload with the asset.
    void SetUploadedAssetID(Guid const& id);

    /// Writes this object and its tree to the trace channel (category "QuilloNative", level 5).
    void Debug_TraceToConsole();

private:
    /// The plain fields, as a worker thread may see them.
    struct Fields {
        AssetProcessingMethod assetProcessingMethod;
        GetAssetIDsMethod getAssetIDsMethod;
        GetAssetDataMethod getAssetDataMethod;
        SetAssetDataMethod setAssetDataMethod;
        LocationPickerMode locationPickerMode = LocationPickerMode::Share;
        SelectLocationCallback selectLocationCallback;
        bool currentViewIDMessagesEnabled = true;
        UTF16String outputFilePath;
        UTF16String processingID;
        bool isNewVersionStack = false;  ///< the asset's version stack is not on its link yet
        Guid assetID1;                   ///< the asset being shared
        Guid assetID2;
        Guid shareID;                       ///< new with every share
        std::optional<unsigned> shareUser;  ///< whose it is: `users` when it began
        Guid versionStackID;
        bool isLinkPending = false;
        bool isUploading = false;
        std::shared_ptr<std::atomic<bool>> isCancelled;  ///< of the share; null before the first
    };
    /// Whose asset's link is on its way: `users`, and the asset.
    using LinkKey = std::tuple<unsigned, Guid, Guid>;

    [[nodiscard]] QUILLO_HIDDEN unsigned BeginSignIn();
    QUILLO_HIDDEN bool TakeSignedIn(unsigned signIn);
    QUILLO_HIDDEN void TakeUser(std::shared_ptr<QuilloUser> const& newUser,
                                std::optional<unsigned> signIn,
                                std::optional<ShareForReviewViewID> view);
    [[nodiscard]] QUILLO_HIDDEN Fields CopyFields() const;
    QUILLO_HIDDEN bool ReadAssetData(char const* key, UTF16String& value) const;
    [[nodiscard]] QUILLO_HIDDEN Guid ReadAssetGuid(char const* key) const;
    [[nodiscard]] QUILLO_HIDDEN static Guid ReadAssetGuid(Fields const& share, char const* key);
    QUILLO_HIDDEN void WriteAssetData(char const* key, UTF16String const& value) const;
    QUILLO_HIDDEN static void WriteAssetData(Fields const& share, char const* key,
                                             UTF16String const& value);
    // The steps of a share; ShareWorkflow.cpp and ShareUpload.cpp say more.
    [[nodiscard]] QUILLO_HIDDEN bool BeginShare(Guid const& first, Guid const& second,
                                                bool& isStillNew);
    QUILLO_HIDDEN void FindVersionStack(bool isStillNew);
    QUILLO_HIDDEN void CreateLinkAndExport(Guid const& projectID);
    QUILLO_HIDDEN void FindLink(Guid const& projectID);
    QUILLO_HIDDEN void TakeLink(Fields const& share, LinkKey const& key, model::StepEnd const& end,
                                Guid const& linkID, UTF16String const& url);
    QUILLO_HIDDEN void GiveUpExport();
    QUILLO_HIDDEN void Upload();
    QUILLO_HIDDEN void TakeUpload(Fields const& share, model::StepEnd const& end,
                                  Guid const& assetID);
    QUILLO_HIDDEN void PutMovieOnLink(Fields const& share);
    QUILLO_HIDDEN void EndShare(Fields const& share, model::StepEnd const& end);
    QUILLO_HIDDEN void ForgetStatus(Fields const& share);
    QUILLO_HIDDEN void FailShare(Guid const& shareID, ShareFailureReason reason,
                                 model::StepEnd const& end);
    [[nodiscard]] QUILLO_HIDDEN bool IsCurrentLocked(Fields const& share) const;
    template <class Action>
    QUILLO_HIDDEN bool IfCurrent(Fields const& share, Action action);
    template <class Step>
    QUILLO_HIDDEN void Guarded(Guid const& shareID, Step step);

    mutable std::mutex mutex;
    Fields fields;  // guarded by mutex, which is never held across a callback
    std::shared_ptr<SelectionKeeper> selectionKeeper;  // of the user; guarded by mutex
    /// Grows with each sign-in, sign-out and user: what an earlier sign-in brings is late. Guarded
    /// by mutex.
    unsigned signIns = 0;
    unsigned users = 0;              // grows with each other user; guarded by mutex
    std::set<LinkKey> pendingLinks;  // guarded by mutex
    std::unique_ptr<OutputFiles> const outputFiles;
    std::unique_ptr<ShareReports> const reports;
};

/// The view's name for developers; "(unknown ShareForReviewViewID value)" for one that has none.
[[nodiscard]] QUILLO_API UTF16String const& ShareForReviewViewIDAsString(ShareForReviewViewID id);

}  // namespace quillomoxui
