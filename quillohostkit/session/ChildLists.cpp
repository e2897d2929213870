#include "quillohostkit/session/ChildLists.h"

#include "quillohostkit/process/Failure.h"
#include "quillomoxui/model/QuilloProject.h"

namespace quillohostkit {
namespace {

using moxcore::async::Future;
using moxcore::async::Promise;
using quillomoxui::FetchChildrenState;
using quillomoxui::NodeKind;
using quillomoxui::QuilloProject;

/// How often the children of a node are asked for.
constexpr int kAttempts = 8;

}  // namespace

struct ChildLists::Request {
    Node node;
    Promise<Children> promise;
    int attempts = 1;
    std::shared_ptr<quillomoxui::BindingHandle> binding;

    [[nodiscard]] bool IsAnswered() const {
        return node->GetFetchChildrenState() == FetchChildrenState::Fetched;
    }
};

ChildLists::ChildLists() : failures([this](auto const& failure) { OnFailure(failure); }) {}

ChildLists::~ChildLists() = default;

void ChildLists::StartFetching(Node const& node) {
    // Down to the projects the tree fetches itself, and a second fetch would replace the nodes that
    // the first one made.
    if (node->GetFetchChildrenState() == FetchChildrenState::NotFetched &&
        node->FindSelfOrAncestorOfType<QuilloProject>())
        node->FetchChildren();
}

Future<ChildLists::Children> ChildLists::ChildrenOf(Node const& node) {
    auto const request = std::make_shared<Request>();
    request->node = node;
    auto future = request->promise.GetFuture();
    // A project comes with its only child and is never said to be fetched.
    if (node->GetKind() == NodeKind::Project || request->IsAnswered()) {
        request->promise.SetValue(node->GetChildNodes());
        return future;
    }
    StartFetching(node);
    // The tree may have asked for this list by itself, and in vain, before anybody waited for it.
    if (hasFailedUnawaited && node->GetFetchChildrenState() == FetchChildrenState::Fetching)
        node->FetchChildren();
    requests.push_back(request);
    request->binding = node->FetchChildrenStateNotifyingPropertyHost::BindValueChanged(
        [this, weak = std::weak_ptr(request)](FetchChildrenState state) {
            auto const waiting = weak.lock();
            if (!waiting || state != FetchChildrenState::Fetched) return;
            Remove(waiting);
            waiting->promise.SetValue(waiting->node->GetChildNodes());
        });
    return future;
}

void ChildLists::OnFailure(quillocommon::Failure const& failure) {
    if (failure.step != quillocommon::Step::ReadLocations) return;
    auto const waiting = requests;
    hasFailedUnawaited = hasFailedUnawaited || waiting.empty();
    for (auto const& request : waiting) {
        if (request->IsAnswered()) continue;
        if (++request->attempts <= kAttempts) {
            request->node->FetchChildren();
            continue;
        }
        Remove(request);
        request->promise.SetException(
            std::make_exception_ptr(Failure(FailureKind::Location, failure.message)));
    }
}

void ChildLists::Remove(std::shared_ptr<Request> const& request) {
    std::erase(requests, request);
    request->binding.reset();
}

}  // namespace quillohostkit
