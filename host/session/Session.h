#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <vector>

#include "host/process/MainLoop.h"
#include "host/process/ProgressDisplay.h"
#include "host/session/Options.h"
#include "host/session/ServiceConnection.h"
#include "quillocommon/Failures.h"
#include "quillohostkit/session/ChildLists.h"
#include "quillohostkit/session/FailureInbox.h"
#include "quillohostkit/state/KeyLocks.h"
#include "quillomoxui/model/QuilloUser.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"

namespace quillohost {

/// The context of every command: the library, set up for this application, its view model, and a
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
    [[nodiscard]] quillohostkit::KeyLocks const& Locks() const { return locks; }
    [[nodiscard]] ServiceConnection const& Service() const { return service; }
    [[nodiscard]] quillohostkit::ChildLists& Lists() { return lists; }

    /// Signs in and returns the user. A Failure (SignIn) when that is impossible.
    std::shared_ptr<quillomoxui::QuilloUser> SignIn();

    /// Signs out: the token is forgotten. A Failure (SignIn) when that is impossible.
    void SignOut();

    /// The value of `future`, which waits for lists of the tree; throws what it fails with, and a
    /// Failure (SignIn) when the session has ended meanwhile.
    template <class T>
    T AwaitLists(moxcore::async::Future<T> const& future) {
        WaitUntil(kSignInSteps, [&future] { return future.IsComplete(); });
        return future.Get();
    }

    /// As MainLoop::WaitUntil; also throws, as a Failure of its kind, the first failure of one of
    /// `steps` that has been reported in this session.
    void WaitUntil(std::initializer_list<quillocommon::Step> steps,
                   std::function<bool()> const& done);

    /// Throws, as a Failure of its kind, the first failure of one of `steps` that has been
    /// reported.
    void ThrowIfFailed(std::initializer_list<quillocommon::Step> steps) const;

private:
    static constexpr std::initializer_list<quillocommon::Step> kSignInSteps{
        quillocommon::Step::SignIn, quillocommon::Step::ReadUser};

    [[nodiscard]] quillocommon::Failure const* FindFailure(
        std::initializer_list<quillocommon::Step> steps) const;
    void OnFailure(quillocommon::Failure const& failure);
    [[noreturn]] void Throw(quillocommon::Failure const& failure) const;

    MainLoop& loop;
    ProgressDisplay& display;
    quillohostkit::KeyLocks const locks;
    std::vector<quillocommon::Failure> failures;  // those reported, first reported first
    quillohostkit::FailureInbox inbox;
    ServiceConnection service;
    quillohostkit::ChildLists lists;
    std::shared_ptr<quillomoxui::ShareForReviewViewModel> viewModel;
    std::vector<std::shared_ptr<quillomoxui::BindingHandle>> waits;
};

}  // namespace quillohost
