#pragma once

#include <QObject>
#include <QWidget>
#include <concepts>
#include <functional>
#include <memory>
#include <utility>

#include "quillohostkit/Asset.h"
#include "quillohostkit/AssetStrings.h"
#include "quillohostkit/Export.h"
#include "quillohostkit/Exporter.h"
#include "quillohostkit/ShareState.h"

namespace quillohostkit {

/// Shares a host's asset for review. The popup hangs from a widget of the host's, `anchor`, which
/// is the controller's parent and owns it; ShareButton is a button that has one.
///
/// One share at a time goes on in a process: an export takes the machine, and the popup shows one
/// link. Others wait for their turn at the button: while an asset is being shared, the popup of
/// every controller shows how far it is. A share goes on when its popup or its window is closed,
/// unless the program ends with the window: then the user is asked. Across processes, one share at
/// a time goes on with one asset.
///
/// Main thread. The functions that return nothing may be called on any thread; they are carried out
/// on the main thread then, later. Nothing here throws; GetState() reports failures.
class QUILLOHOSTKIT_API ShareController : public QObject {
    Q_OBJECT

public:
    /// The popup hangs from `anchor`, which owns the controller.
    explicit ShareController(QWidget* anchor);
    ~ShareController() override;

    /// Asked for what to share when the popup is opened, on the main thread.
    void SetAsset(std::function<Asset()> asset);
    /// The same of one asset that does not change.
    void SetAsset(Asset const& asset);

    /// Makes the movie. FfmpegExporter on the asset's path unless it is set.
    void SetExporter(std::shared_ptr<Exporter> exporter);
    /// The same of an exporter by value.
    template <std::derived_from<Exporter> Kind>
    void SetExporter(Kind exporter) {
        SetExporter(std::make_shared<Kind>(std::move(exporter)));
    }
    /// The same of a function, which is called as Exporter::Export is, on a worker thread.
    void SetExporter(std::function<void(ExportJob&)> exporter);

    /// Where the asset's strings are kept, instead of in the kit's database.
    void SetAssetStrings(std::shared_ptr<AssetStrings> strings);

    /// For the host's own widgets. Owned by this.
    [[nodiscard]] ShareState* GetState() const;

    /// What happens to a share when the window of the anchor is closed.
    enum class WhenClosed {
        AskIfLast,  ///< ask when the program ends with the window, else go on
        Ask,        ///< always ask: the program ends with this window
        GoOn,       ///< never ask; the host sees to it
    };
    /// AskIfLast unless it is set.
    void SetWhenClosed(WhenClosed whenClosed);

public Q_SLOTS:
    /// Opens the popup: to sign in, to share, to see how far that is, or to copy the link.
    void Open();
    /// Opens the popup to share the asset as its next version.
    void ShareAgain();
    /// Tells that the asset may be another one now: an open popup goes over to it.
    void Refresh();
    /// Ends the share under way. An exported movie that is being uploaded is kept.
    void Cancel();
    /// Signs out, in the whole process.
    void SignOut();

protected:
    /// Follows the window of the anchor.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    friend class PreferencesPage;
    class Client;

    template <class Call>
    void OnMainThread(char const* function, Call call);

    std::unique_ptr<Client> client;
};

}  // namespace quillohostkit
