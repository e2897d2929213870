#pragma once

#include <QWidget>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "host/session/Options.h"
#include "host/session/ServiceConnection.h"
#include "moxcore/utility/LifetimeToken.h"
#include "quillohostkit/media/MovieExport.h"
#include "quillohostkit/session/Destinations.h"
#include "quillohostkit/session/FailureInbox.h"
#include "quillohostkit/session/ShareLocks.h"
#include "quillohostkit/state/SharedAsset.h"
#include "quillomoxui/sharedui/PopupManager.h"
#include "quillomoxui/sharedui/ShareForReviewScreenManager.h"
#include "quillomoxui/viewmodel/ShareEvents.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillohost::editor {

/// Shares the window's movies through the library's popup, one at a time. A share goes on when its
/// popup is closed, and when another movie is opened meanwhile: the popup stays with the movie that
/// is being shared until that has ended, and is then the new movie's. Main thread.
class Sharing : private quillomoxui::ShareEvents {
public:
    enum class Phase { Idle, Linking, Exporting, Uploading, Finishing };

    struct Hooks {
        std::function<void(std::string const&)> tell;  ///< one line for the user
        std::function<void()> onChanged;               ///< what can be done, or the phase
        /// Whether to share a damaged movie as far as it could be read; may wait for the user.
        std::function<bool(std::string const& damage)> acceptsDamage;
    };

    /// The popup hangs from `anchorWidget`. Starts a service when the options name none. A Failure
    /// when the options name no proper one, or the host's files cannot be used.
    Sharing(Options const& options, QWidget& anchorWidget, Hooks hooks);

    /// Ends an export, and removes what there is of its file.
    ~Sharing() override;
    Sharing(Sharing const&) = delete;
    Sharing& operator=(Sharing const&) = delete;

    /// The movie that is open in the window.
    void SetMovie(quillohostkit::Movie const& movie);

    /// Whether the popup can be opened: there is a movie, and a service.
    [[nodiscard]] bool IsReady() const { return open && isServiceReady; }
    void OpenPopup();
    void ShowDebugView();

    /// Whether the movie has been shared since it was opened, so that the popup shows its link.
    [[nodiscard]] bool CanShareAgain() const;
    /// Opens the popup to share the movie as its next version.
    void ShareAgain();

    [[nodiscard]] bool IsServiceReady() const { return isServiceReady; }
    /// Where movies go that were never shared. A Failure when the host's files cannot be used.
    [[nodiscard]] std::optional<quillohostkit::ChosenLocation> DefaultDestination() const;
    void SetDefaultDestination(std::optional<quillohostkit::ChosenLocation> const& location);

    /// One line for the user.
    [[nodiscard]] std::string Explain(quillocommon::Failure const& failure) const {
        return service.Explain(failure);
    }

    [[nodiscard]] Phase GetPhase() const { return phase; }
    /// The name of the movie that is being shared, or was last.
    [[nodiscard]] std::string const& GetSharedName() const { return sharedName; }
    void CancelExport();

    [[nodiscard]] quillomoxui::ShareForReviewViewModel& ViewModel() const { return *viewModel; }

    /// For the end of the program: what the user must know of a share that ends with it; else
    /// empty.
    [[nodiscard]] std::string Epitaph() const;

private:
    void ShareBegan(quillomoxui::ShareInfo const& began) override;
    void ExportWanted(quillomoxui::ShareInfo const& wanted,
                      quillomoxui::UTF16String const& outputFilePath,
                      quillomoxui::UTF16String const& processingID) override;
    void UploadProgressed(quillomoxui::ShareInfo const& uploading, double fraction) override;
    void ShareFinished(quillomoxui::ShareInfo const& finished) override;
    void ShareFailed(quillomoxui::ShareInfo const& failed,
                     quillomoxui::ShareFailure const& failure) override;

    void ConnectLibrary();
    [[nodiscard]] bool IsSharing() const;
    void ActivateOpen();
    void Reset();
    [[nodiscard]] bool IsPopupOpen() const;
    void WithLocks(std::function<void()> const& then);
    void OnViewChanged(quillomoxui::ShareForReviewViewID view);
    void OnUserChanged(quillomoxui::QuilloUser const& user);
    void OnSignInChanged(quilloauth::SignInProgress const& progress);
    void OnFailure(quillocommon::Failure const& failure);
    void Export(std::filesystem::path const& output);
    void ExportMovie(
        quillohostkit::Movie const& movie, std::filesystem::path const& output,
        quillohostkit::MovieExport::Damaged damaged = quillohostkit::MovieExport::Damaged::Refuse);
    void GiveUpExport(std::string const& why);
    void End();
    void SetPhase(Phase newPhase);

    Hooks hooks;
    quillohostkit::KeyLocks const locks;
    quillohostkit::FailureInbox failures;  // first: the service's address may be worth a warning
    ServiceConnection service;
    bool isServiceReady = false;
    std::shared_ptr<quillohostkit::AssetStore> store;
    std::shared_ptr<quillomoxui::ShareForReviewViewModel> viewModel;
    boost::intrusive_ptr<moxui::ui::UI_Node> anchor;
    std::shared_ptr<quillomoxui::PopupManager> popup;
    std::shared_ptr<quillomoxui::ShareForReviewScreenManager> screens;
    quillohostkit::Destinations destinations;
    quillohostkit::ShareLocks shareLocks;
    std::shared_ptr<quillohostkit::SharedAsset> open;    // the window's; null: none
    std::shared_ptr<quillohostkit::SharedAsset> active;  // the popup's; null: none
    Phase phase = Phase::Idle;                           // as far as the library has reported
    quillomoxui::ShareInfo share;                        // that goes on
    std::string sharedName;
    std::string exportFailure;  // why it has no movie
    bool isSigningIn = false;
    std::filesystem::path exported;
    std::filesystem::file_time_type sharedState;  // of the movie's file, when it was exported
    std::unique_ptr<quillohostkit::MovieProbe> probe;
    std::unique_ptr<quillohostkit::MovieExport> exporter;
    std::vector<std::shared_ptr<quillomoxui::BindingHandle>> bindings;
    moxcore::utility::LifetimeToken token;
};

}  // namespace quillohost::editor
