#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillosdk/Records.h"
#include "quillosdk/ResponseWith.h"

namespace quillosdk {

class Session;

struct CreateReviewLinkRequest {
    CreateReviewLinkRequest(quillocommon::Guid const& projectID, std::string name)
        : projectID(projectID), name(std::move(name)) {}
    quillocommon::Guid projectID;
    std::string name;
};

class CreateReviewLinkResponse : public ResponseWith<ReviewLink> {
public:
    using ResponseWith::ResponseWith;
    [[nodiscard]] ReviewLink const& GetReviewLinkObject() const { return content; }
};

struct AddAssetsToReviewLinkRequest {
    AddAssetsToReviewLinkRequest(quillocommon::Guid const& linkID,
                                 std::vector<quillocommon::Guid> assetIDs)
        : linkID(linkID), assetIDs(std::move(assetIDs)) {}
    quillocommon::Guid linkID;
    std::vector<quillocommon::Guid> assetIDs;
};

class AddAssetsToReviewLinkResponse : public QuilloResponse {
public:
    using QuilloResponse::QuilloResponse;
};

/// Review links. Both requests are repeated when the service refuses them for now or no answer
/// comes (see RetryPolicy), and both are safe to repeat. Answers come on the transport's thread.
/// Any thread.
class QUILLOSERVICES_API ReviewLinks {
public:
    explicit ReviewLinks(std::shared_ptr<Session> session);

    /// Creates a link. However often an answer is lost, one call makes one link; and when a call
    /// ends without an answer, the next one for the same project and name is the same creation to
    /// the service.
    moxcore::async::Future<std::shared_ptr<CreateReviewLinkResponse>> CreateReviewLink(
        CreateReviewLinkRequest const& request);

    /// Adds assets to a link; those already there stay. A refusal fails the future: the
    /// caller must not take the movie to be on the link.
    moxcore::async::Future<std::shared_ptr<AddAssetsToReviewLinkResponse>> AddAssetsToReviewLink(
        AddAssetsToReviewLinkRequest const& request);

private:
    struct OpenCreations;

    std::shared_ptr<Session> session;
    std::shared_ptr<OpenCreations> openCreations;
};

}  // namespace quillosdk
