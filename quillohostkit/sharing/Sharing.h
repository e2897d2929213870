#pragma once

#include <QObject>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "moxcore/utility/LifetimeToken.h"
#include "quillohostkit/Export.h"
#include "quillohostkit/ShareState.h"
#include "quillohostkit/exporting/ExportRun.h"
#include "quillohostkit/session/Destinations.h"
#include "quillohostkit/session/FailureInbox.h"
#include "quillohostkit/session/ShareLocks.h"
#include "quillohostkit/sharing/SharingClient.h"
#include "quillohostkit/state/AssetStore.h"
#include "quillomoxui/sharedui/PopupManager.h"
#include "quillomoxui/sharedui/ShareForReviewScreenManager.h"
#include "quillomoxui/viewmodel/ShareEvents.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillohostkit {

/// All sharing of a process: one share at a time, one popup, which hangs from the client that has
/// opened it last. A share goes on when its popup is closed and when its client is gone. Made at
/// the first use, ends with the application. Main thread.
class QUILLOHOSTKIT_API Sharing : private quillomoxui::ShareEvents {
public:
    using Phase = ShareState::Phase;

    /// What a client shows.
    struct Status {
        std::string userName;
        Phase phase = Phase::Idle;
        std::string title;
        double progress = -1;
        std::string link;
        std::int64_t version = 0;
        bool canCancel = false;
        bool canShareAgain = false;
    };

    /// The one of this process; null where there is no application.
    [[nodiscard]] static std::shared_ptr<Sharing> Get();
    /// Ends it, as the application does: what is exported is given up, and what is uploaded is
    /// kept.
    static void End();
    /// Null, too, before the first Get.
    [[nodiscard]] static std::shared_ptr<Sharing> Existing();

    Sharing();
    ~Sharing() override;
    Sharing(Sharing const&) = delete;
    Sharing& operator=(Sharing const&) = delete;

    /// `client` is called until it is removed.
    void Add(SharingClient& client);
    void Remove(SharingClient& client);

    /// Takes up the session that is kept, without the browser, once there is a service.
    void Resume();

    /// Whether something can be shared; if not, the clients get the reason.
    bool IsReady();
    void Open(SharingClient& client);
    void ShareAgain(SharingClient& client);
    /// Its asset may be another one: an open popup goes over to it.
    void Refresh(SharingClient& client);
    void Cancel();
    void SignIn();
    void SignOut();

    [[nodiscard]] Status GetStatus(SharingClient const& client) const;
    /// Whether a share goes on, also one whose beginning or end has not been reported yet.
    [[nodiscard]] bool IsSharing() const;
    [[nodiscard]] Phase GetPhase() const { return phase; }

    /// Where assets go that were never shared. A Failure when there is no service, or the kit's
    /// files cannot be used.
    [[nodiscard]] std::optional<ChosenLocation> DefaultDestination();
    void SetDefaultDestination(std::optional<ChosenLocation> const& location);

    /// Opens the popup on the library's view for developers.
    void ShowDebugView();

    /// The library's own; null before there is a service.
    [[nodiscard]] std::shared_ptr<quillomoxui::ShareForReviewViewModel> const& ViewModel() const {
        return viewModel;
    }

private:
    /// What is shared, or was last, and from where.
    struct Active {
        SharingClient* client;  // null: gone
        Asset asset;
        std::shared_ptr<Exporter> exporter;
        std::shared_ptr<AssetStrings> hostStrings;
        std::shared_ptr<SharedAsset> shared;
        QString sharedRevision;  // when it was exported
    };

    /// What is kept between runs.
    struct Files {
        std::shared_ptr<AssetStore> store;
        Destinations destinations;
        ShareLocks shareLocks;
    };

    void ShareBegan(quillomoxui::ShareInfo const& began) override;
    void ExportWanted(quillomoxui::ShareInfo const& wanted,
                      quillomoxui::UTF16String const& outputFilePath,
                      quillomoxui::UTF16String const& processingID) override;
    void UploadProgressed(quillomoxui::ShareInfo const& uploading, double fraction) override;
    void ShareFinished(quillomoxui::ShareInfo const& finished) override;
    void ShareFailed(quillomoxui::ShareInfo const& failed,
                     quillomoxui::ShareFailure const& failure) override;

    bool Connect();
    void ConnectLibrary();
    void OpenFiles();
    void MakePopup();
    [[nodiscard]] bool IsPopupOpen() const;
    bool Take(SharingClient& client);
    void Activate(SharingClient& client, Asset const& asset);
    void UpdateActive(Asset const& asset);
    void Reset();
    void HangPopupFrom(SharingClient& client);
    void ShowPopup(SharingClient& client);
    void WithLocks(std::function<void()> const& then);
    void OnUserChanged(quillomoxui::QuilloUser const& user);
    void OnSignInChanged(quilloauth::SignInProgress const& progress);
    void OnFailure(quillocommon::Failure const& failure);
    void Export(std::filesystem::path const& output);
    void TakeExport(std::string const& failure);
    void GiveUpExport(std::string const& why);
    void LeaveShare();
    void Stop();
    void SetPhase(Phase newPhase);
    void Changed();
    void Tell(std::string const& line);
    void TellException(std::exception_ptr const& thrown);
    [[nodiscard]] bool CanCancel() const;
    void ForEachClient(std::function<void(SharingClient&)> const& call);

    std::vector<SharingClient*> clients;
    FailureInbox failures;
    std::shared_ptr<quillomoxui::ShareForReviewViewModel> viewModel;  // null: no service yet
    std::unique_ptr<Files> files;                                     // null: not used yet
    boost::intrusive_ptr<moxui::ui::UI_Node> anchor;
    std::shared_ptr<quillomoxui::PopupManager> popup;
    std::shared_ptr<quillomoxui::ShareForReviewScreenManager> screens;
    std::shared_ptr<Active> active;  // the popup's; null: none
    Phase phase = Phase::Idle;       // as far as the library has reported
    double progress = -1;
    quillomoxui::ShareInfo share;  // that goes on
    std::string title;
    std::string exportFailure;  // why it has no movie
    std::string userName;
    bool isOpening = false;  // the popup; it waits for locks
    bool isResuming = false;
    bool isSigningIn = false;
    std::filesystem::path exported;
    std::unique_ptr<ExportRun> run;
    std::vector<std::shared_ptr<quillomoxui::BindingHandle>> bindings;
    QMetaObject::Connection quitConnection;
    moxcore::utility::LifetimeToken token;
};

}  // namespace quillohostkit
