#include <gmock/gmock.h>

#include <thread>

#include "quillomoxui/viewmodel/AssetDataKeys.h"
#include "tests/quillomoxui/viewmodel/WorkflowTest.h"

namespace quillomoxui {
namespace {

using moxcore::string::UTF16to8;
using moxcore::string::UTF8to16;
using moxcore::utility::Guid;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Log = std::vector<std::string>;
using Reason = ShareFailureReason;

constexpr char kRefusal[] = R"({"error":{"code":"forbidden","message":"no"}})";

/// Writes down what it hears, each share by the name of its asset, and holds that to the rules:
/// the main thread only, one beginning, one end, nothing after it.
class Observer : public ShareEvents {
public:
    Log log;
    std::vector<ShareFailure> failures;
    std::map<Guid, bool> hasEnded;  // by the share's ID
    std::thread::id const mainThread = std::this_thread::get_id();

    void ShareBegan(ShareInfo const& share) override {
        EXPECT_TRUE(hasEnded.emplace(share.shareID, false).second) << "has begun already";
        EXPECT_FALSE(share.shareID.IsNull());
        Note(share, "began");
    }
    void LinkReady(ShareInfo const& share, Guid const& linkID, UTF16String const& url) override {
        EXPECT_EQ(linkID, Guid(kLink));
        EXPECT_EQ(UTF16to8(url), kUrl);
        Note(share, "link");
    }
    void ExportWanted(ShareInfo const& share, UTF16String const& path,
                      UTF16String const& processingID) override {
        EXPECT_FALSE(processingID.empty());
        wanted = UTF16to8(path);
        Note(share, "export");
    }
    void UploadProgressed(ShareInfo const& share, double fraction) override {
        if (fraction == 1) Note(share, "uploaded");
    }
    void ShareFinished(ShareInfo const& share) override {
        Note(share, "finished");
        hasEnded[share.shareID] = true;
    }
    void ShareFailed(ShareInfo const& share, ShareFailure const& failure) override {
        EXPECT_FALSE(failure.text.empty());
        failures.push_back(failure);
        Note(share, "failed");
        hasEnded[share.shareID] = true;
    }

    std::string wanted;  // the file

private:
    void Note(ShareInfo const& share, char const* what) {
        EXPECT_EQ(std::this_thread::get_id(), mainThread);
        EXPECT_FALSE(hasEnded[share.shareID]) << "has ended";
        log.push_back(UTF16to8(share.assetName) + " " + what);
    }
};

class ShareEventsTest : public WorkflowTest {
protected:
    ShareEventsTest() { viewModel->ObserveShares(observer); }

    /// Makes another asset of that name the active one.
    void Activate(std::string const& name) {
        AllowLinks();
        host.ActivateAnother();
        viewModel->SetActiveAssetName(UTF8to16(name));
        viewModel->StartShareForReviewPopup();
        user->SetSelection(folder);
    }

    void Press(std::string const& name) {
        Activate(name);
        viewModel->ProcessAssetForReview();
    }

    void ExportIsDone() {
        std::ofstream(host.exports.back()) << "a movie";
        viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
    }

    void Elapse() { executor.AdvanceBy(std::chrono::hours(1)); }

    Log Heard() {
        testsupport::DrainMainThread();
        return std::exchange(observer->log, {});
    }

    void SomebodyElseComes() {
        auto const other = std::make_shared<QuilloUser>();
        other->SetInitialID(Guid::CreateUnique());
        viewModel->SetUser(other);
    }

    std::shared_ptr<Observer> observer = std::make_shared<Observer>();
};

TEST_F(ShareEventsTest, AShareThatGoesWellIsToldStepByStep) {
    for (auto const& name : {"One", "Two"}) {  // the second one has its link already
        viewModel->SetActiveAssetName(UTF8to16(name));
        auto const is = [name](char const* what) { return name + std::string(" ") + what; };
        EXPECT_FALSE(viewModel->IsShareUnderWay());
        user->SetSelection(folder);
        viewModel->ProcessAssetForReview();
        EXPECT_TRUE(viewModel->IsShareUnderWay());
        EXPECT_THAT(observer->log, IsEmpty()) << "nothing within the call";
        EXPECT_THAT(Heard(), ElementsAre(is("began"), is("link"), is("export")));
        EXPECT_EQ(observer->wanted, host.exports.back());
        viewModel->SetEncodingStatus({EncodingStatus::Encoding});
        ExportIsDone();
        Elapse();
        EXPECT_FALSE(viewModel->IsShareUnderWay());
        EXPECT_FALSE(IsExportKept());
        EXPECT_THAT(Heard(), ElementsAre(is("uploaded"), is("finished")));
        viewModel->SetEncodingStatus({EncodingStatus::None});
        EXPECT_THAT(Heard(), IsEmpty());
    }
}

/// What ends a share, and where.
struct Ending {
    char const* name;
    std::function<void()> take;  // from the press of the button
    Reason reason;
    char const* says;
};

TEST_F(ShareEventsTest, EveryShareThatEndsWithoutALinkSaysWhy) {
    auto const upload = [&] {
        viewModel->ProcessAssetForReview();
        ExportIsDone();
    };
    auto const refuse = [&](std::string const& request) {
        On(request, kRefusal, 403);
        upload();
        Elapse();
        AllowLinks();
        Ignore("POST /v1/uploads");
    };
    auto const wait = [&](auto then) {
        Ignore(kCreateLink);
        viewModel->ProcessAssetForReview();
        then();
    };
    std::vector<Ending> const endings = {
        {"no link",
         [&] {
             On(kCreateLink, kRefusal, 403);
             viewModel->ProcessAssetForReview();
         },
         Reason::NoLink, "403 (no)"},
        {"no identifier in the link",
         [&] {
             On(kCreateLink, R"({"review_link":{}})", 201);
             viewModel->ProcessAssetForReview();
         },
         Reason::NoLink, "without telling"},
        {"export failed",
         [&] {
             viewModel->ProcessAssetForReview();
             viewModel->SetEncodingStatus({EncodingStatus::Encoding});
             viewModel->SetEncodingStatus({EncodingStatus::UploadFailed});
         },
         Reason::NotExported, "exported"},
        {"export given up",
         [&] {
             viewModel->ProcessAssetForReview();
             viewModel->SetEncodingStatus({EncodingStatus::None});
         },
         Reason::NotExported, "exported"},
        {"no movie",
         [&] {
             viewModel->ProcessAssetForReview();
             viewModel->SetEncodingStatus({EncodingStatus::EncodingComplete});
             Elapse();
         },
         Reason::NotUploaded, "Could not upload"},
        {"upload refused", [&] { refuse("POST /v1/uploads"); }, Reason::NotUploaded, "403 (no)"},
        {"addition refused", [&] { refuse(kAddToLink); }, Reason::NotOnLink, "403 (no)"},
        {"cancelled for its link", [&] { wait([&] { viewModel->CancelShare(); }); },
         Reason::Cancelled, "cancelled"},
        {"cancelled for its export",
         [&] {
             viewModel->ProcessAssetForReview();
             viewModel->CancelShare();
         },
         Reason::Cancelled, "cancelled"},
        {"cancelled in its upload",
         [&] {
             upload();
             viewModel->CancelShare();
             Elapse();
         },
         Reason::Cancelled, "cancelled"},
        {"another user, for its link", [&] { wait([&] { SomebodyElseComes(); }); },
         Reason::OtherUser, "signed out"},
        {"another user, for its export",
         [&] {
             viewModel->ProcessAssetForReview();
             SomebodyElseComes();
             ExportIsDone();
         },
         Reason::OtherUser, "signed out"},
    };
    for (auto const& ending : endings) {
        SCOPED_TRACE(ending.name);
        viewModel->SetUser(user);
        Activate(ending.name);
        ending.take();
        testsupport::DrainMainThread();
        ASSERT_EQ(observer->failures.size(), 1u);
        EXPECT_EQ(observer->failures[0].reason, ending.reason);
        EXPECT_THAT(observer->failures[0].text, HasSubstr(ending.says));
        EXPECT_FALSE(viewModel->IsShareUnderWay());
        observer->failures.clear();
        // What comes late tells nothing more; the observer sees to that.
        viewModel->SetEncodingStatus({EncodingStatus::UploadFailed});
        Elapse();
        testsupport::DrainMainThread();
        EXPECT_THAT(observer->failures, IsEmpty());
    }
}

TEST_F(ShareEventsTest, SignedOutAShareFailsAtTheStepThatNeedsTheService) {
    Share();  // has its link from here on
    Heard();
    viewModel->Logout();
    viewModel->SetUser(user);
    viewModel->ProcessAssetForReview();
    ExportIsDone();
    Press("Two");
    EXPECT_THAT(Heard(), ElementsAre("My Sequence began", "My Sequence link", "My Sequence export",
                                     "My Sequence failed", "Two began", "Two failed"));
    EXPECT_EQ(observer->failures[0].reason, Reason::NotUploaded);
    EXPECT_EQ(observer->failures[1].reason, Reason::NoLink);
    for (auto const& failure : observer->failures)
        EXPECT_THAT(failure.text, HasSubstr("nobody is signed in"));
}

TEST_F(ShareEventsTest, AnOvertakenShareEndsAtOnceOrWithItsUpload) {
    Ignore(kCreateLink);
    host.ActivateAnother();
    viewModel->SetActiveAssetName(UTF8to16("Link"));
    user->SetSelection(folder);
    viewModel->ProcessAssetForReview();
    viewModel->ProcessAssetForReview();  // pressed twice: the same share
    Press("Export");
    Press("Upload");
    ExportIsDone();
    Press("Last");
    EXPECT_THAT(Heard(),
                ElementsAre("Link began", "Link failed", "Export began", "Export link",
                            "Export export", "Export failed", "Upload began", "Upload link",
                            "Upload export", "Last began", "Last link", "Last export"));
    for (auto const& failure : observer->failures)
        EXPECT_EQ(failure.reason, Reason::Overtaken);
    Elapse();
    EXPECT_THAT(Heard(), ElementsAre("Upload uploaded", "Upload finished"));
    EXPECT_TRUE(viewModel->IsShareUnderWay());
    ExportIsDone();
    Elapse();
    EXPECT_THAT(Heard(), ElementsAre("Last uploaded", "Last finished"));
}

TEST_F(ShareEventsTest, OfTwoSharesThatWaitForOneLinkTheSecondGetsIt) {
    Ignore(kCreateLink);
    host.ActivateAnother();
    auto const asset = host.asset;
    viewModel->SetActiveAssetName(UTF8to16("First"));
    user->SetSelection(folder);
    viewModel->ProcessAssetForReview();
    host.ActivateAnother();
    viewModel->ProcessAssetForReview();
    host.ActivateAnother();
    host.asset = asset;
    host.data = host.others[asset.AsStdString()];
    viewModel->SetActiveAssetName(UTF8to16("Second"));
    viewModel->ProcessAssetForReview();
    Heard();
    transport.Answer(
        IndicesOf(kCreateLink).front(), 201,
        std::string(R"({"review_link":{"id":")") + kLink + R"(","url":")" + kUrl + R"("}})");
    EXPECT_THAT(Heard(), ElementsAre("Second link", "Second export"));
}

TEST_F(ShareEventsTest, WhatTheHostThrowsEndsTheShare) {
    struct Broken : std::runtime_error {
        Broken() : std::runtime_error("the editor's disk is full") {}
    };
    std::string failsAt;
    viewModel->SetAssetDataMethods(
        [this](Guid& first, Guid&) {
            first = host.asset;
            return true;
        },
        [this](Guid const&, Guid const&, UTF16String const& key, UTF16String& value) {
            auto const found = host.data.find(UTF16to8(key));
            if (found == host.data.end()) return false;
            value = UTF8to16(found->second);
            return true;
        },
        [&](Guid const&, Guid const&, UTF16String const& key, UTF16String const& value) {
            if (UTF16to8(key) == failsAt) throw Broken();
            host.data[UTF16to8(key)] = UTF16to8(value);
            return true;
        });
    viewModel->SetAssetProcessingMethod([&](UTF16String const& path, UTF16String const&) {
        if (failsAt == "export") throw Broken();
        host.exports.push_back(UTF16to8(path));
    });
    for (std::string const step :
         {assetdata::kUploadFolderGuid, assetdata::kVersionStackGuid, assetdata::kReviewLinkGuid,
          "export", assetdata::kUploadedAssetGuid}) {
        SCOPED_TRACE(step);
        failsAt = step;
        Activate("One");
        bool const isWithinTheCall =
            step == assetdata::kUploadFolderGuid || step == assetdata::kVersionStackGuid;
        if (isWithinTheCall)
            EXPECT_THROW(viewModel->ProcessAssetForReview(), Broken);
        else
            viewModel->ProcessAssetForReview();
        if (step == assetdata::kUploadedAssetGuid) ExportIsDone();
        Elapse();
        testsupport::DrainMainThread();
        ASSERT_EQ(observer->failures.size(), 1u);
        EXPECT_EQ(observer->failures[0].reason, Reason::HostCallback);
        EXPECT_THAT(observer->failures[0].text, HasSubstr("disk is full"));
        EXPECT_NE(viewModel->GetEncodingStatus().status, EncodingStatus::Uploading);
        observer->failures.clear();

        failsAt.clear();  // it goes on from there
        observer->log.clear();
        Share();
        EXPECT_EQ(Heard().back(), "One finished");
    }
}

TEST_F(ShareEventsTest, AShareEndsWithItsViewModel) {
    std::vector<std::function<void()>> const moments = {
        [&] {
            Ignore(kCreateLink);
            viewModel->ProcessAssetForReview();
        },
        [&] { viewModel->ProcessAssetForReview(); },
        [&] {
            viewModel->ProcessAssetForReview();
            ExportIsDone();
        },
    };
    for (auto const& reach : moments) {
        viewModel = std::make_shared<ShareForReviewViewModel>();
        host.Connect(*viewModel);
        viewModel->SetUser(user);
        viewModel->ObserveShares(observer);
        Activate("One");
        reach();
        viewModel.reset();
        Elapse();
        EXPECT_EQ(Heard().back(), "One failed");
        ASSERT_EQ(observer->failures.size(), 1u);
        EXPECT_EQ(observer->failures[0].reason, Reason::LibraryClosed);
        observer->failures.clear();
    }
}

TEST_F(ShareEventsTest, ObserversComeAndGo) {
    auto const second = std::make_shared<Observer>();
    viewModel->ProcessAssetForReview();  // to nowhere: nothing has begun
    Press("One");
    observer.reset();  // what is on its way to it is dropped
    testsupport::DrainMainThread();
    viewModel->ObserveShares(second);
    Press("Two");
    testsupport::DrainMainThread();
    EXPECT_THAT(second->log, ElementsAre("One failed", "Two began", "Two link", "Two export"));
}

}  // namespace
}  // namespace quillomoxui
