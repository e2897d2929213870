// A host outside the tree: "consumer MOVIE" shares a file under a button of its own and prints the
// review link. The service is the one that QUILLO_SERVICE_URL names.
#include <QApplication>
#include <QPushButton>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <vector>

#include "moxcore/string/Conversions.h"
#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxui/backend/HostWidget.h"
#include "quillocommon/Failures.h"
#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/QuilloWorkspace.h"
#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"
#include "quillomoxui/sharedui/PopupManager.h"
#include "quillomoxui/sharedui/ShareForReviewScreenManager.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace {

using namespace quillomoxui;
using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;

void EndWith(int exitCode, std::string const& message) {
    std::fprintf(exitCode == 0 ? stdout : stderr, "%s\n", message.c_str());
    moxcore::threads::AsyncCallFromMainThread([=] { QApplication::exit(exitCode); }, 0);
}

class Sharing : public ShareEvents {
public:
    Sharing(ShareForReviewViewModel& viewModel, std::filesystem::path const& movie)
        : viewModel(viewModel), movie(movie) {
        viewModel.SetActiveAssetName(UTF8to16(movie.stem().string()));
        viewModel.SetAssetProcessingMethod([](auto&...) {});  // ExportWanted asks for it
        viewModel.SetAssetDataMethods([](auto&, auto&) { return true; },
                                      [this](auto&, auto&, auto& key, auto& value) {
                                          value = strings[key];
                                          return !value.empty();
                                      },
                                      [this](auto&, auto&, auto& key, auto& value) {
                                          strings[key] = value;
                                          return true;
                                      });
    }

    /// Shares into the first project that the service lists to the user who signs in.
    void Start() {
        Bind<UserNotifyingPropertyHost>(viewModel, [this](auto& user) {
            Bind<AccountsNotifyingPropertyHost>(*user, [this](auto& accounts) {
                for (auto& account : accounts)
                    Bind<WorkspacesNotifyingPropertyHost>(*account, [this](auto& workspaces) {
                        for (auto& workspace : workspaces)
                            Bind<ProjectsNotifyingPropertyHost>(*workspace, [this](auto& projects) {
                                for (auto& project : projects)
                                    Bind<RootFolderNotifyingPropertyHost>(
                                        *project, [this](auto& folder) { ShareInto(folder); });
                            });
                    });
            });
        });
        viewModel.StartShareForReviewPopup();
        viewModel.Login();
    }

private:
    template <class Property>
    void Bind(Property& owner, auto const& callback) {
        bindings.push_back(owner.BindValueChanged(callback));
    }

    void ShareInto(std::shared_ptr<QuilloFolder> const& folder) {
        if (!folder || !strings.empty() || viewModel.IsShareUnderWay()) return;
        viewModel.GetUser()->SetSelection(folder);
        viewModel.LocationPickerSelectionCommitted();
        viewModel.ProcessAssetForReview();
    }

    void ExportWanted(ShareInfo const&, UTF16String const& file, UTF16String const&) override {
        viewModel.SetEncodingStatus({EncodingStatus::Encoding});
        std::filesystem::copy_file(movie, UTF16to8(file));
        viewModel.SetEncodingStatus({EncodingStatus::EncodingComplete});
    }
    void ShareFinished(ShareInfo const&) override {
        EndWith(0, UTF16to8(viewModel.GetReviewLinkURL()));
    }
    void ShareFailed(ShareInfo const&, ShareFailure const& failure) override {
        EndWith(1, failure.text);
    }

    ShareForReviewViewModel& viewModel;
    std::filesystem::path const movie;
    std::map<UTF16String, UTF16String> strings;
    std::vector<std::shared_ptr<BindingHandle>> bindings;
};

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    moxui::backend::RunMainThreadQueueInQt();
    InitQuilloCppSdk(UTF8to16("consumer"), UTF8to16("http://127.0.0.1/signed-in"));
    auto const failures =
        quillocommon::ListenToFailures([](auto& failure) { EndWith(1, failure.message); });

    QPushButton button("Share for Review");
    button.show();
    auto const anchor = moxui::backend::WrapWidget(&button);
    auto const popup = CreatePopupManager();
    auto const viewModel = std::make_shared<ShareForReviewViewModel>();
    auto const screens = CreateShareForReviewScreenManager(viewModel, popup);
    popup->SetParent(anchor);

    auto const sharing = std::make_shared<Sharing>(*viewModel, argv[1]);
    viewModel->ObserveShares(sharing);
    sharing->Start();
    return QApplication::exec();
}
