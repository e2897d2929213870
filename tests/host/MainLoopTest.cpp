#include "host/MainLoop.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <thread>

#include "host/Failure.h"

namespace quillohost {
namespace {

TEST(MainLoop, EndsAWaitWithTheValueOrTheFailureOfAFuture) {
    MainLoop loop;
    moxcore::async::Promise<int> answer;
    std::thread worker([&answer] { answer.SetValue(42); });
    EXPECT_EQ(loop.Await(answer.GetFuture()), 42);
    worker.join();

    moxcore::async::Promise<int> failed;
    failed.SetException(std::make_exception_ptr(Failure(ExitCode::Export, "no")));
    EXPECT_THROW(loop.Await(failed.GetFuture()), Failure);
}

TEST(MainLoop, EndsAWaitWithWhatAQueuedFunctionThrows) {
    MainLoop loop;
    moxcore::threads::AsyncCallFromMainThread([] { throw std::out_of_range("too far"); }, 0);
    EXPECT_THROW(loop.WaitUntil([] { return false; }), std::out_of_range);
}

TEST(MainLoop, EndsAWaitOnASignal) {
    for (int number : {SIGINT, SIGTERM, SIGHUP}) {
        MainLoop loop;
        kill(getpid(), number);
        try {
            loop.WaitUntil([] { return false; });
            ADD_FAILURE();
        } catch (Failure const& failure) {
            EXPECT_EQ(failure.GetExitCode(), ExitCode::Interrupted);
        }
    }
}

}  // namespace
}  // namespace quillohost
