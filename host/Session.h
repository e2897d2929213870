#pragma once

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/EmbeddedService.h"
#include "host/KeyLocks.h"
#include "host/MainLoop.h"
#include "host/Options.h"
#include "host/ProgressDisplay.h"
#include "quillocommon/Failures.h"
#include "quillomoxui/model/QuilloNode.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillohost {

/// What every command needs: the library, set up for this application, its view model, and a
/// service to talk to. The library is silent about most failures; a wait made here ends with what
/// the service's libraries report. Main thread.
class Session {
public:
    /// Starts a service when the options name none. A Failure when that is impossible.
    Session(Options const& options, MainLoop& loop, ProgressDisplay& display);
    ~Session();
    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    [[nodiscard]] quillomoxui::ShareForReviewViewModel& ViewModel() const { return *viewModel; }
    [[nodiscard]] MainLoop& Loop() const { return loop; }
    [[nodiscard]] ProgressDisplay& Display() const { return display; }
    [[nodiscard]] KeyLocks const& Locks() const { return locks; }
    [[nodiscard]] std::string const& Address() const { return address; }

    /// Where the state of a service of the host's own lies; none when the options name a service.
    [[nodiscard]] std::optional<std::filesystem::path> EmbeddedData() const;

    /// A name for the service that stays the same when one of the host's own changes its port.
    [[nodiscard]] std::string ServiceName() const;

    /// Signs in and returns the user. A Failure (SignIn) when that is impossible.
    std::shared_ptr<quillomoxui::QuilloUser> SignIn();

    /// Signs out: the token is forgotten. A Failure (SignIn) when that is impossible.
    void SignOut();

    /// Has the children of `node` fetched unless they have been, or are on their way.
    static void StartFetching(std::shared_ptr<quillomoxui::QuilloNode> const& node);

    /// The children of `node`, which are fetched when they have not been, once they are there. They
    /// may be replaced in the tree later, so hold on to those that are still needed, and to the
    /// nodes above them. A Failure (Location) when the list cannot be had.
    quillomoxui::NodeVector<quillomoxui::QuilloNode> ChildrenOf(
        std::shared_ptr<quillomoxui::QuilloNode> const& node);

    /// As MainLoop::WaitUntil; also throws, as a Failure of its kind, the first failure of one of
    /// `steps` that has been reported in this session.
    void WaitUntil(std::initializer_list<quillocommon::Step> steps,
                   std::function<bool()> const& done);

    /// Puts a failure behind those that have been reported.
    void AddFailure(quillocommon::Failure const& failure) { failures->push_back(failure); }

private:
    void UseEmbeddedService(Options const& options);
    [[nodiscard]] quillocommon::Failure const* FindFailure(
        std::initializer_list<quillocommon::Step> steps) const;
    [[nodiscard]] std::size_t CountFailures(quillocommon::Step step) const;
    [[noreturn]] void Throw(quillocommon::Failure const& failure) const;

    MainLoop& loop;
    ProgressDisplay& display;
    Backend const backend;
    KeyLocks const locks;
    std::shared_ptr<KeyLocks::Lock> serviceLock;
    std::unique_ptr<EmbeddedService> embedded;
    std::filesystem::path embeddedData;
    std::string address;
    std::shared_ptr<quillomoxui::ShareForReviewViewModel> viewModel;
    /// Shared with calls that are on their way to the main thread.
    std::shared_ptr<std::vector<quillocommon::Failure>> failures;
    std::shared_ptr<quillocommon::FailureSubscription> subscription;
};

/// Where the host keeps files of its own.
[[nodiscard]] std::filesystem::path HostDataFile(std::string const& name);

}  // namespace quillohost
