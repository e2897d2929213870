#include "host/process/MainLoop.h"

#include <memory>
#include <utility>

#include "moxcore/config/Localizer.h"
#include "moxcore/threads/MainThread.h"
#include "quillohostkit/process/Failure.h"

namespace quillohost {

using moxcore::config::Text;
using moxcore::threads::MainThread;

MainLoop::MainLoop()
    : signals([this] {
          Fail(std::make_exception_ptr(
              quillohostkit::Failure(quillohostkit::FailureKind::Interrupted,
                                     Text("$$$/Vistrel/quillo-host/Interrupted=Interrupted."))));
      }) {
    MainThread::SetFailureHandler([this](std::exception_ptr const& thrown) { Fail(thrown); });
}

MainLoop::~MainLoop() {
    MainThread::SetFailureHandler(nullptr);
}

void MainLoop::WaitUntil(std::function<bool()> const& done) {
    MainThread::RunUntil([&] { return failure || done(); });
    if (failure) std::rethrow_exception(std::exchange(failure, nullptr));
}

void MainLoop::Fail(std::exception_ptr newFailure) {
    moxcore::threads::AsyncCallFromMainThread(
        [this, handedOver = std::move(newFailure)] {
            if (failure) return;
            failure = handedOver;
            if (failureHook) failureHook();
        },
        0);
}

}  // namespace quillohost
