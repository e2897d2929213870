#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "quillomoxui/model/QuilloAccount.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloProject.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/model/QuilloWorkspace.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "tests/quillomoxui/SignedIn.h"

namespace quillomoxui {

inline constexpr char kProject[] = "aaaaaaaa-0000-0000-0000-000000000001";
inline constexpr char kFolder[] = "aaaaaaaa-0000-0000-0000-000000000002";
inline constexpr char kLink[] = "aaaaaaaa-0000-0000-0000-000000000003";
inline constexpr char kUrl[] = "http://service.test/r/aaaaaaaa-0000-0000-0000-000000000003";
inline std::string const kCreateLink =
    std::string("POST /v1/projects/") + kProject + "/review-links";
inline std::string const kAddToLink = std::string("POST /v1/review-links/") + kLink + "/assets";

/// An editor with one asset, whose strings it keeps and which it exports when told.
struct Host {
    using Strings = std::map<std::string, std::string>;
    Strings data;                           ///< of the active asset
    std::map<std::string, Strings> others;  ///< of the other assets, by their first Guid
    std::vector<std::string> exports;
    std::vector<std::string> processingIDs;  ///< of the exports
    moxcore::utility::Guid asset{"bbbbbbbb-0000-0000-0000-000000000001"};

    /// Makes another asset the active one; returns the strings of the one before.
    Strings& ActivateAnother() {
        auto& before = others[asset.AsStdString()];
        before = std::exchange(data, {});
        asset = moxcore::utility::Guid::CreateUnique();
        return before;
    }

    void Connect(ShareForReviewViewModel& viewModel) {
        viewModel.SetAssetDataMethods(
            [this](moxcore::utility::Guid& first, moxcore::utility::Guid& second) {
                first = asset;
                second = moxcore::utility::Guid("bbbbbbbb-0000-0000-0000-000000000002");
                return true;
            },
            [this](moxcore::utility::Guid const& first, moxcore::utility::Guid const&,
                   UTF16String const& key, UTF16String& value) {
                auto& strings = first == asset ? data : others[first.AsStdString()];
                auto const found = strings.find(moxcore::string::UTF16to8(key));
                if (found == strings.end()) return false;
                value = moxcore::string::UTF8to16(found->second);
                return true;
            },
            [this](moxcore::utility::Guid const& first, moxcore::utility::Guid const&,
                   UTF16String const& key, UTF16String const& value) {
                auto& strings = first == asset ? data : others[first.AsStdString()];
                strings[moxcore::string::UTF16to8(key)] = moxcore::string::UTF16to8(value);
                return true;
            });
        viewModel.SetAssetProcessingMethod([this](UTF16String const& path, UTF16String const& id) {
            exports.push_back(moxcore::string::UTF16to8(path));
            processingIDs.push_back(moxcore::string::UTF16to8(id));
        });
    }
};

class WorkflowTest : public ServiceTest {
protected:
    WorkflowTest() {
        EXPECT_TRUE(SignIn());
        AllowLinks();
        host.Connect(*viewModel);
        viewModel->SetActiveAssetName(moxcore::string::UTF8to16("My Sequence"));
        viewModel->SetUser(user);
        user->SetInitialID(moxcore::utility::Guid::CreateUnique());
        project->SetInitialID(moxcore::utility::Guid(kProject));
        folder->SetInitialID(moxcore::utility::Guid(kFolder));
        views = viewModel->CurrentViewIDNotifyingPropertyHost::BindValueChanged(
            [this](ShareForReviewViewID view) { seen.push_back(view); });
    }

    // What is still to be delivered reaches into this object.
    ~WorkflowTest() override { testsupport::DrainMainThread(); }

    void AllowLinks() {
        On(kCreateLink,
           std::string(R"({"review_link":{"id":")") + kLink + R"(","url":")" + kUrl + R"("}})",
           201);
        On(kAddToLink, R"({"added":1})");
    }

    /// Presses Share and has the host export; ends where the service does.
    void Share(std::string const& movie = "a movie") {
        user->SetSelection(folder);
        auto const exportsBefore = host.exports.size();
        viewModel->ProcessAssetForReview();
        executor.AdvanceBy(std::chrono::hours(1));
        if (host.exports.size() == exportsBefore) return;
        viewModel->SetEncodingStatus({EncodingStatus::Encoding});
        std::ofstream(host.exports.back(), std::ios::binary) << movie;
        viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
        executor.AdvanceBy(std::chrono::hours(1));
    }

    [[nodiscard]] bool IsExportKept() const { return std::filesystem::exists(host.exports.back()); }

    /// The views shown since the last call.
    std::vector<ShareForReviewViewID> Seen() {
        testsupport::DrainMainThread();
        return std::exchange(seen, {});
    }

    std::shared_ptr<ShareForReviewViewModel> viewModel =
        std::make_shared<ShareForReviewViewModel>();
    Host host;
    std::shared_ptr<QuilloUser> user = std::make_shared<QuilloUser>();
    std::shared_ptr<QuilloAccount> account = std::make_shared<QuilloAccount>(user);
    std::shared_ptr<QuilloWorkspace> workspace = std::make_shared<QuilloWorkspace>(account);
    std::shared_ptr<QuilloProject> project = std::make_shared<QuilloProject>(workspace);
    std::shared_ptr<QuilloFolder> folder = std::make_shared<QuilloFolder>(project);

private:
    std::vector<ShareForReviewViewID> seen;
    std::shared_ptr<BindingHandle> views;
};

}  // namespace quillomoxui
