#include "quillohostkit/ShareController.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMessageBox>
#include <QPointer>
#include <QThread>

#include "quillohostkit/FfmpegExporter.h"
#include "quillohostkit/sharing/CloseQuestion.h"
#include "quillohostkit/sharing/PaletteTheme.h"
#include "quillohostkit/sharing/Sharing.h"
#include "quillohostkit/sharing/StateValues.h"
#include "quillohostkit/text/PlainText.h"
#include "quillohostkit/widgets/QtText.h"

namespace quillohostkit {
namespace {

/// A function as an exporter.
class FunctionExporter : public Exporter {
public:
    explicit FunctionExporter(std::function<void(ExportJob&)> newFunction)
        : function(std::move(newFunction)) {}
    void Export(ExportJob& job) override { function(job); }

private:
    std::function<void(ExportJob&)> function;
};

QString Shown(std::string const& line) {
    return QString::fromStdString(OneLine(line));
}

}  // namespace

/// The controller as the process's sharing sees it.
class ShareController::Client : public SharingClient {
public:
    Client(ShareController& controller, QWidget& anchor)
        : state(new ShareState(&controller)), anchor(anchor), sharing(Sharing::Get()) {
        if (auto const alive = sharing.lock()) alive->Add(*this);
    }
    ~Client() override {
        if (auto const alive = sharing.lock()) alive->Remove(*this);
    }
    Client(Client const&) = delete;
    Client& operator=(Client const&) = delete;

    [[nodiscard]] Asset GetAsset() const override { return asset ? asset() : Asset{}; }
    [[nodiscard]] std::shared_ptr<Exporter> GetExporter() const override { return exporter; }
    [[nodiscard]] std::shared_ptr<AssetStrings> GetStrings() const override { return strings; }
    [[nodiscard]] QWidget& GetAnchor() const override { return anchor; }

    void OnChanged() override {
        auto const alive = sharing.lock();
        if (!alive) return;
        auto const status = alive->GetStatus(*this);
        state->Set({Shown(status.userName), status.phase, Shown(status.title), status.progress,
                    Shown(status.link), static_cast<int>(status.version), status.canCancel,
                    status.canShareAgain});
    }
    void OnMessage(std::string const& line) override { state->SetMessage(Shown(line)); }
    void OnFinished() override { Q_EMIT state->shareFinished(state->link(), state->version()); }
    void OnFailed(std::string const& reason) override {
        if (!state->IsObserved()) ShowFailure(Shown(reason));
        Q_EMIT state->shareFailed(Shown(reason));
    }

    ShareState* const state;
    std::function<Asset()> asset;
    std::shared_ptr<Exporter> exporter = std::make_shared<FfmpegExporter>();
    std::shared_ptr<AssetStrings> strings;
    WhenClosed whenClosed = WhenClosed::AskIfLast;
    QWidget& anchor;
    std::weak_ptr<Sharing> const sharing;
    QPointer<QWidget> window;  // whose closing is watched

private:
    /// The host shows no messages.
    void ShowFailure(QString const& reason) const {
        auto* const box =
            new QMessageBox(QMessageBox::Warning,
                            QtText("$$$/Vistrel/quillohostkit/ShareForReview=Share for Review"),
                            reason, QMessageBox::Ok, anchor.window());
        box->setTextFormat(Qt::PlainText);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
    }
};

ShareController::ShareController(QWidget* anchor)
    : QObject(anchor), client(std::make_unique<Client>(*this, *anchor)) {
    anchor->installEventFilter(this);
    client->OnChanged();
}

ShareController::~ShareController() = default;

template <class Call>
void ShareController::OnMainThread(char const* function, Call call) {
    if (QThread::currentThread() == thread()) return call();
    qWarning(
        "quillohostkit: ShareController::%s was called on another thread; it is carried out "
        "later, on the main one.",
        function);
    QMetaObject::invokeMethod(this, call, Qt::QueuedConnection);
}

void ShareController::SetAsset(std::function<Asset()> asset) {
    OnMainThread("SetAsset", [this, asset = std::move(asset)] { client->asset = asset; });
}

void ShareController::SetAsset(Asset const& asset) {
    SetAsset([asset] { return asset; });
}

void ShareController::SetExporter(std::shared_ptr<Exporter> exporter) {
    OnMainThread("SetExporter", [this, exporter = std::move(exporter)] {
        client->exporter = exporter ? exporter : std::make_shared<FfmpegExporter>();
    });
}

void ShareController::SetExporter(std::function<void(ExportJob&)> exporter) {
    SetExporter(std::make_shared<FunctionExporter>(std::move(exporter)));
}

void ShareController::SetAssetStrings(std::shared_ptr<AssetStrings> strings) {
    OnMainThread("SetAssetStrings",
                 [this, strings = std::move(strings)] { client->strings = strings; });
}

ShareState* ShareController::GetState() const {
    return client->state;
}

void ShareController::SetWhenClosed(WhenClosed whenClosed) {
    OnMainThread("SetWhenClosed", [this, whenClosed] { client->whenClosed = whenClosed; });
}

void ShareController::Open() {
    OnMainThread("Open", [this] {
        if (client->window != client->anchor.window()) {
            if (client->window) client->window->removeEventFilter(this);
            client->window = client->anchor.window();
            client->window->installEventFilter(this);
        }
        if (auto const sharing = client->sharing.lock()) sharing->Open(*client);
    });
}

void ShareController::ShareAgain() {
    OnMainThread("ShareAgain", [this] {
        if (auto const sharing = client->sharing.lock()) sharing->ShareAgain(*client);
    });
}

void ShareController::Refresh() {
    OnMainThread("Refresh", [this] {
        if (auto const sharing = client->sharing.lock()) sharing->Refresh(*client);
    });
}

void ShareController::Cancel() {
    OnMainThread("Cancel", [this] {
        if (auto const sharing = client->sharing.lock()) sharing->Cancel();
    });
}

void ShareController::SignOut() {
    OnMainThread("SignOut", [this] {
        if (auto const sharing = client->sharing.lock()) sharing->SignOut();
    });
}

bool ShareController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == client->window && event->type() == QEvent::Close) {
        auto const sharing = client->sharing.lock();
        bool const asks =
            client->whenClosed == WhenClosed::Ask ||
            (client->whenClosed == WhenClosed::AskIfLast && EndsWith(*client->window));
        if (asks && sharing && sharing->IsSharing() && !MayStop(*client->window, *client->state)) {
            event->ignore();
            return true;
        }
    }
    if (watched == &client->anchor && event->type() == QEvent::PaletteChange)
        FollowPalette(client->anchor.palette());
    return QObject::eventFilter(watched, event);
}

}  // namespace quillohostkit
