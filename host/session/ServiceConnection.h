#pragma once

#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "host/session/EmbeddedService.h"
#include "host/session/Options.h"
#include "moxcore/async/Future.h"
#include "moxcore/utility/LifetimeToken.h"
#include "quillohostkit/state/KeyLocks.h"

namespace quillohost {

/// The service that the library talks to: the one that the options name, or one of the host's own.
/// Of the hosts that share a data directory, one at a time runs a service there. Main thread.
class ServiceConnection {
public:
    struct Hooks {
        std::function<void()> onWait;  ///< another host runs the service; called in the constructor
        std::function<void(std::exception_ptr)> onGone;  ///< a service of the host's own has ended
    };

    /// Starts a service when the options name none. A Failure (Usage) when they name an address
    /// that is none.
    ServiceConnection(Options const& options, quillohostkit::KeyLocks const& locks, Hooks hooks);
    ~ServiceConnection();
    ServiceConnection(ServiceConnection const&) = delete;
    ServiceConnection& operator=(ServiceConnection const&) = delete;

    /// Completes on the main thread once the library knows the service. Fails with a Failure when
    /// there is no service.
    [[nodiscard]] moxcore::async::Future<void> Ready() const { return ready.GetFuture(); }

    /// Empty until it is ready.
    [[nodiscard]] std::string const& Address() const { return address; }

    /// A name for the service that stays the same when one of the host's own changes its port.
    [[nodiscard]] std::string ServiceName() const;

    /// The instruction for opening a review link; empty when it opens as it is.
    [[nodiscard]] std::string HowToOpen(std::string const& link) const;

private:
    void Start();
    void Use(std::string const& named);

    Hooks hooks;
    std::shared_ptr<quillohostkit::KeyLocks::Lock> lock;
    std::unique_ptr<EmbeddedService> embedded;
    std::filesystem::path embeddedData;  // empty: the options name a service
    std::string address;
    moxcore::async::Promise<void> ready;
    moxcore::utility::LifetimeToken token;
};

}  // namespace quillohost
