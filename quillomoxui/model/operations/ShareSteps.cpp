#include "quillomoxui/model/operations/ShareSteps.h"

#include <cstdint>
#include <exception>
#include <memory>

#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "quillocommon/Failures.h"
#include "quillomoxui/model/sdk/GuidConversions.h"
#include "quillomoxui/model/sdk/QuilloCppSdkIntegration.h"
#include "quillosdk/QuilloClient.h"

namespace quillomoxui::model {

using moxcore::async::Future;
using moxcore::utility::Guid;
using quillocommon::Step;

namespace {

constexpr char kNobodySignedIn[] = "Could not share: nobody is signed in; sign in and share again.";
constexpr char kNoAssetID[] =
    "Could not upload: the service has taken the movie without telling its ID; share it again.";

/// The shared client; null when there is none, and `step` is reported as failed.
std::shared_ptr<quillosdk::QuilloClient> ClientFor(Step step) {
    auto client = QuilloCppSdkIntegration::GetQuilloClient();
    if (!client)
        quillocommon::ReportFailure({step, moxcore::config::kUnknownFailure, 0, kNobodySignedIn});
    return client;
}

/// How the step answered by `answer` has ended.
template <class Response>
StepEnd EndOf(Future<std::shared_ptr<Response>> const& answer) {
    auto const exception = answer.GetException();
    if (!exception) return {};
    bool const isCalledOff = moxcore::config::ExtractResultFromException(exception) >= 0;
    return {isCalledOff ? StepEnd::Kind::CalledOff : StepEnd::Kind::Failed,
            moxcore::config::ExtractMessageFromException(exception)};
}

}  // namespace

StepEnd NobodySignedIn() {
    return {StepEnd::Kind::Failed, kNobodySignedIn};
}

bool MakeReviewLink(LinkRequest const& wanted) {
    auto const client = ClientFor(Step::CreateReviewLink);
    if (!client) return false;

    quillosdk::CreateReviewLinkRequest const request(
        ToServiceGuid(wanted.projectID), moxcore::string::UTF16toStdString(wanted.name));
    using Answer = Future<std::shared_ptr<quillosdk::CreateReviewLinkResponse>>;
    static_cast<void>(client->GetReviewLinks().CreateReviewLink(request).Then(
        [completion = wanted.completion](Answer const& answer) {
            auto const end = EndOf(answer);
            if (!end.IsDone()) return completion(end, {}, {});
            // A link with an ID and a URL is a link, whatever the answer's status says.
            auto const response = answer.Get();
            auto const link = response->GetReviewLinkObject();
            if (!link.id || !link.url)
                return completion({StepEnd::Kind::Failed, response->GetRefusal()}, {}, {});
            completion(end, FromServiceGuid(*link.id),
                       moxcore::string::StdToUTF16String(*link.url));
        }));
    return true;
}

bool UploadMovie(MovieUpload const& upload) {
    auto const client = ClientFor(Step::Upload);
    if (!client) return false;

    quillosdk::UploadRequest request(
        ToServiceGuid(upload.folderID), moxcore::string::UTF16toStdString(upload.path),
        [progress = upload.progress](std::uint64_t done, std::uint64_t total) {
            progress(static_cast<double>(done) / static_cast<double>(total));
        });
    request.SetAutoversionId(ToServiceGuid(upload.versionStackID));
    request.SetWaitListener(upload.waiting);
    quillocommon::Guid uploadID;
    using Answer = Future<std::shared_ptr<quillosdk::UploadResponse>>;
    static_cast<void>(
        client->GetTransferManager()
            .Upload(request, uploadID)
            .Then([completion = upload.completion](Answer const& answer) {
                auto const end = EndOf(answer);
                if (!end.IsDone()) return completion(end, {});
                auto const response = answer.Get();
                auto const asset = response->GetAssetObject();
                if (!response->IsSuccessful())
                    return completion({StepEnd::Kind::Failed, response->GetRefusal()}, {});
                if (!asset.id) return completion({StepEnd::Kind::Failed, kNoAssetID}, {});
                completion(end, FromServiceGuid(*asset.id));
            }));
    return true;
}

bool PutOnLink(Guid const& assetID, Guid const& linkID,
               std::function<void(StepEnd const&)> const& completion) {
    auto const client = ClientFor(Step::AddToReviewLink);
    if (!client) return false;

    quillosdk::AddAssetsToReviewLinkRequest const request(ToServiceGuid(linkID),
                                                          {ToServiceGuid(assetID)});
    using Answer = Future<std::shared_ptr<quillosdk::AddAssetsToReviewLinkResponse>>;
    static_cast<void>(client->GetReviewLinks().AddAssetsToReviewLink(request).Then(
        [completion](Answer const& answer) { completion(EndOf(answer)); }));
    return true;
}

}  // namespace quillomoxui::model
