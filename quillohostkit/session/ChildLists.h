#pragma once

#include <memory>
#include <vector>

#include "moxcore/async/Future.h"
#include "quillohostkit/Export.h"
#include "quillohostkit/session/FailureInbox.h"
#include "quillomoxui/model/QuilloNode.h"

namespace quillohostkit {

/// Waits for lists of the location tree. The library does not tell whose list it was that failed,
/// and does not ask again; this does both. Main thread; destroying it cancels what is awaited.
class QUILLOHOSTKIT_API ChildLists {
public:
    using Node = std::shared_ptr<quillomoxui::QuilloNode>;
    using Children = quillomoxui::NodeVector<quillomoxui::QuilloNode>;

    ChildLists();
    ~ChildLists();
    ChildLists(ChildLists const&) = delete;
    ChildLists& operator=(ChildLists const&) = delete;

    /// Has the children of `node` fetched unless they have been, or are on their way.
    static void StartFetching(Node const& node);

    /// The children of `node`, which are fetched when they have not been; completes on the main
    /// thread. They may be replaced in the tree later, so hold on to those that are still needed,
    /// and to the nodes above them. Fails with a Failure (Location) when the list cannot be had.
    [[nodiscard]] moxcore::async::Future<Children> ChildrenOf(Node const& node);

private:
    struct Request;

    void OnFailure(quillocommon::Failure const& failure);
    void Remove(std::shared_ptr<Request> const& request);

    std::vector<std::shared_ptr<Request>> requests;  // not answered yet
    bool hasFailedUnawaited = false;                 // a list failed that nobody awaited yet
    FailureInbox failures;
};

}  // namespace quillohostkit
