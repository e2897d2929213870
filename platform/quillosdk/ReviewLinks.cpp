#include "quillosdk/ReviewLinks.h"

#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <utility>

#include "moxcore/async/CancelledException.h"
#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "quillosdk/AnswerReader.h"
#include "quillosdk/Deliver.h"
#include "quillosdk/PathTo.h"
#include "quillosdk/RetryPolicy.h"
#include "quillosdk/Session.h"

namespace quillosdk {
namespace {

HttpRequest PostJson(std::string path, nlohmann::json const& body) {
    using nlohmann::json;
    auto text = body.dump(-1, ' ', false, json::error_handler_t::replace);
    return {.method = "POST",
            .url = std::move(path),
            .headers = {{"Content-Type", "application/json"}},
            .body = std::make_shared<std::string const>(std::move(text))};
}

/// Whether the service may have created a link that the answer does not let us have.
bool IsUndecided(moxcore::async::Future<std::shared_ptr<CreateReviewLinkResponse>> const& future) {
    if (future.GetException()) return true;
    auto const response = future.Get();
    if (!response->IsSuccessful()) return RetryPolicy::IsTransient(response->GetHTTPStatusCode());
    auto const& link = response->GetReviewLinkObject();
    return !link.id || !link.url;
}

}  // namespace

/// The keys of creations that have ended undecided, by what was to be created. The next creation of
/// the same takes its key over, so that the service knows it for the same.
struct ReviewLinks::OpenCreations {
    using What = std::pair<std::string, std::string>;  // project and name

    std::mutex mutex;
    std::multimap<What, std::string> keys;  // guarded by mutex

    std::string TakeKey(What const& what) {
        std::lock_guard lock(mutex);
        auto const found = keys.find(what);
        if (found == keys.end()) return quillocommon::Guid::CreateUnique().AsString();
        return keys.extract(found).mapped();
    }

    void Keep(What what, std::string key) {
        std::lock_guard lock(mutex);
        keys.emplace(std::move(what), std::move(key));
    }
};

ReviewLinks::ReviewLinks(std::shared_ptr<Session> session)
    : session(std::move(session)), openCreations(std::make_shared<OpenCreations>()) {}

moxcore::async::Future<std::shared_ptr<CreateReviewLinkResponse>> ReviewLinks::CreateReviewLink(
    CreateReviewLinkRequest const& request) {
    OpenCreations::What what{request.projectID.AsString(), request.name};
    auto const key = openCreations->TakeKey(what);

    auto post = PostJson("/v1/projects/" + what.first + "/review-links", {{"name", request.name}});
    post.headers.emplace_back("Idempotency-Key", key);
    Task task{quillocommon::Step::CreateReviewLink, "create a review link"};
    auto created =
        FetchWithRetries<CreateReviewLinkResponse>(*session, post, task, &ReadReviewLink);
    return created.Then([open = openCreations, what = std::move(what), key,
                         task](auto const& future) {
        if (IsUndecided(future)) open->Keep(what, key);
        auto response = future.Get();
        auto const& link = response->GetReviewLinkObject();
        if (response->IsSuccessful() && (!link.id || !link.url)) {
            auto const incomplete = std::make_exception_ptr(moxcore::config::ResultException(
                kMalformedAnswer, "the service created it without telling its ID or its address"));
            auto const reported = ReportException(task, incomplete, response->GetHTTPStatusCode());
            response->SetRefusal(moxcore::config::ExtractMessageFromException(reported));
        }
        return response;
    });
}

moxcore::async::Future<std::shared_ptr<AddAssetsToReviewLinkResponse>>
ReviewLinks::AddAssetsToReviewLink(AddAssetsToReviewLinkRequest const& request) {
    auto assetIDs = nlohmann::json::array();
    for (auto const& id : request.assetIDs)
        assetIDs.push_back(id.AsString());
    auto const answer =
        session->SendWithRetries(PostJson(PathTo("/v1/review-links/", request.linkID, "/assets"),
                                          {{"asset_ids", std::move(assetIDs)}}));

    return answer.Then([](Answer const& arrived) {
        Task const task{quillocommon::Step::AddToReviewLink, "add the movie to the review link"};
        std::shared_ptr<HttpResponse> response;
        try {
            response = arrived.Get();
        } catch (moxcore::async::CancelledException const&) {
            throw moxcore::config::ResultException(kCalledOff, "the addition was called off");
        } catch (...) {
            std::rethrow_exception(ReportException(task, std::current_exception()));
        }
        if (response->status < 200 || response->status > 299)
            throw moxcore::config::ResultException(kRefused, ReportRefusal(task, *response));
        return std::make_shared<AddAssetsToReviewLinkResponse>(response->status, response->headers);
    });
}

}  // namespace quillosdk
