#include "host/process/MainLoop.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <optional>
#include <stdexcept>
#include <thread>

#include "quillohostkit/process/ChildProcess.h"
#include "quillohostkit/process/Failure.h"

namespace quillohost {
namespace {

TEST(MainLoop, EndsAWaitWithTheValueOrTheFailureOfAFuture) {
    MainLoop loop;
    moxcore::async::Promise<int> answer;
    std::thread worker([&answer] { answer.SetValue(42); });
    EXPECT_EQ(loop.Await(answer.GetFuture()), 42);
    worker.join();

    moxcore::async::Promise<int> failed;
    failed.SetException(
        std::make_exception_ptr(quillohostkit::Failure(quillohostkit::FailureKind::Export, "no")));
    EXPECT_THROW(loop.Await(failed.GetFuture()), quillohostkit::Failure);
}

TEST(MainLoop, EndsAWaitWithWhatAQueuedFunctionThrows) {
    MainLoop loop;
    moxcore::threads::AsyncCallFromMainThread([] { throw std::out_of_range("too far"); }, 0);
    EXPECT_THROW(loop.WaitUntil([] { return false; }), std::out_of_range);
}

/// How a wait ends once these signals have come, one after the other.
void ExpectInterruption(std::initializer_list<int> signals) {
    MainLoop loop;
    for (int number : signals)
        kill(getpid(), number);
    try {
        loop.WaitUntil([] { return false; });
        ADD_FAILURE();
    } catch (quillohostkit::Failure const& failure) {
        EXPECT_EQ(failure.GetKind(), quillohostkit::FailureKind::Interrupted);
    }
}

TEST(MainLoop, EndsAWaitOnASignal) {
    for (int number : {SIGINT, SIGTERM, SIGHUP}) {
        signal(number, SIG_DFL);  // whatever the tests were started with
        ExpectInterruption({number});
    }
}

TEST(MainLoop, HearsASignalAfterOthersThatSayNothing) {
    ExpectInterruption({SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM, SIGPROF, SIGPOLL, SIGPIPE, SIGTERM});
}

TEST(MainLoop, DoesNotHearWhatWasIgnoredWhenItBegan) {
    for (int number : {SIGINT, SIGHUP}) {
        auto const before = signal(number, SIG_IGN);
        ExpectInterruption({number, SIGTERM});  // two that are heard would end the process
        signal(number, before);
    }
}

TEST(MainLoop, LeavesItsSignalsOutOfAProgramAndHearsOfItsEnd) {
    auto const before = signal(SIGCHLD, SIG_IGN);
    MainLoop loop;
    std::optional<quillohostkit::ExitStatus> ended;
    quillohostkit::ChildProcess const program(
        "/bin/sh", {"-c", "kill -USR2 $$"}, quillohostkit::ChildProcess::Input::Nothing,
        {.onExit = [&ended](auto status) { ended = status; }});
    loop.WaitUntil([&ended] { return ended.has_value(); });
    EXPECT_EQ(ended->signal, SIGUSR2);
    signal(SIGCHLD, before);
}

}  // namespace
}  // namespace quillohost
