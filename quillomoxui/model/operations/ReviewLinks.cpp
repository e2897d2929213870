#include "quillomoxui/model/operations/ReviewLinks.h"

#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/operations/ClientFor.h"
#include "quillomoxui/model/sdk/GuidConversions.h"
#include "quillosdk/QuilloClient.h"

namespace quillomoxui::model {

using moxcore::async::Future;
using moxcore::config::ExtractResultFromException;
using moxcore::utility::Guid;

bool CreateReviewLink(
    Guid const& projectID, UTF16String const& name,
    std::function<void(bool, Guid const&, UTF16String const&)> const& completion) {
    auto const client = ClientFor(quillocommon::Step::CreateReviewLink);
    if (!client) return false;

    quillosdk::CreateReviewLinkRequest const request(ToServiceGuid(projectID),
                                                     moxcore::string::UTF16toStdString(name));
    using Answer = Future<std::shared_ptr<quillosdk::CreateReviewLinkResponse>>;
    static_cast<void>(
        client->GetReviewLinks().CreateReviewLink(request).Then([completion](Answer const& answer) {
            if (ExtractResultFromException(answer.GetException()) < 0)
                return completion(false, {}, {});
            // A link with an ID and a URL is a link, whatever the answer's status says.
            auto const link = answer.Get()->GetReviewLinkObject();
            if (!link.id || !link.url) return completion(false, {}, {});
            completion(true, FromServiceGuid(*link.id),
                       moxcore::string::StdToUTF16String(*link.url));
        }));
    return true;
}

bool AddAssetToLink(Guid const& assetID, Guid const& linkID,
                    std::function<void(bool)> const& completion) {
    auto const client = ClientFor(quillocommon::Step::AddToReviewLink);
    if (!client) return false;

    quillosdk::AddAssetsToReviewLinkRequest const request(ToServiceGuid(linkID),
                                                          {ToServiceGuid(assetID)});
    using Answer = Future<std::shared_ptr<quillosdk::AddAssetsToReviewLinkResponse>>;
    static_cast<void>(client->GetReviewLinks().AddAssetsToReviewLink(request).Then(
        [completion](Answer const& answer) {
            completion(ExtractResultFromException(answer.GetException()) >= 0);
        }));
    return true;
}

}  // namespace quillomoxui::model
