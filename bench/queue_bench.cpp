// The paced fetch queue under a clock that the bench turns: a million requests, and the proof that
// no window ever held more of them than the service allows; what a push costs with few and with
// many requests waiting.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

#include "moxcore/threads/Clock.h"
#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/sdk/ChildQueues.h"
#include "tests/support/ManualExecutor.h"

namespace {

using namespace quillomoxui;
using Sdk = model::QuilloCppSdkIntegration;
using moxcore::threads::TimePoint;

constexpr int kLimit = 1000;
constexpr auto kWindow = std::chrono::milliseconds(2000);

/// A queue that answers itself, one step after the request, and knows when it sent what.
class Queue final : public Sdk::FetchChildrenQueue<quillosdk::GetChildAssetsRequest,
                                                   quillosdk::GetChildAssetsResponse,
                                                   std::vector<quillosdk::Asset>> {
public:
    Queue()
        : FetchChildrenQueue(kLimit, std::chrono::duration_cast<std::chrono::seconds>(kWindow)) {}

    moxcore::async::Future<void> RequestChildren(quillocommon::Guid const&,
                                                 Continuation continuation) const override {
        CheckWindow();
        moxcore::async::Promise<std::shared_ptr<quillosdk::GetChildAssetsResponse>> promise;
        auto sent = promise.GetFuture().Then(std::move(continuation));
        unanswered.push_back(std::move(promise));
        return sent;
    }

    std::vector<quillosdk::Asset> const& GetChildrenList(
        std::shared_ptr<quillosdk::GetChildAssetsResponse> const& response) const override {
        return response->GetChildAssetsObject();
    }

    void AnswerAll() const {
        static auto const answer = std::make_shared<quillosdk::GetChildAssetsResponse>(
            200, quillosdk::Headers(), std::vector<quillosdk::Asset>());
        for (auto& promise : std::exchange(unanswered, {}))
            promise.SetValue(answer);
    }

    [[nodiscard]] std::int64_t Sent() const { return sent; }

private:
    void CheckWindow() const {
        auto const now = moxcore::threads::Now();
        while (!inWindow.empty() && now - inWindow.front() > kWindow)
            inWindow.pop_front();
        inWindow.push_back(now);
        ++sent;
        if (inWindow.size() <= kLimit) return;
        std::fprintf(stderr, "queue_bench: one request too many in a window\n");
        std::exit(1);
    }

    // Interfaces of the queue are const where they change nothing of the queue's.
    mutable std::vector<moxcore::async::Promise<std::shared_ptr<quillosdk::GetChildAssetsResponse>>>
        unanswered;
    mutable std::deque<TimePoint> inWindow;
    mutable std::int64_t sent = 0;
};

void AMillionRequests(benchmark::State& state) {
    constexpr std::int64_t kRequests = 1'000'000;
    auto const node = std::make_shared<QuilloFolder>(nullptr);
    for (auto _ : state) {
        testsupport::ManualExecutor executor;
        auto const queue = std::make_shared<Queue>();
        for (std::int64_t i = 0; i < kRequests; ++i)
            queue->Push(node, [](auto const&) {});
        auto const begin = moxcore::threads::Now();
        for (executor.RunDue(); queue->Sent() < kRequests; executor.AdvanceBy(kWindow / 4))
            queue->AnswerAll();
        state.counters["simulated_s"] =
            std::chrono::duration<double>(moxcore::threads::Now() - begin).count();
    }
    state.SetItemsProcessed(state.iterations() * kRequests);
}

/// One push, one answer, with `range` requests waiting in the queue all the time.
void PushToAnswer(benchmark::State& state) {
    testsupport::ManualExecutor executor;
    auto const queue = std::make_shared<Queue>();
    auto const node = std::make_shared<QuilloFolder>(nullptr);
    for (std::int64_t i = 0; i < state.range(0); ++i)
        queue->Push(node, [](auto const&) {});
    for (auto _ : state) {
        for (int i = 0; i < kLimit; ++i)
            queue->Push(node, [](auto const&) {});
        executor.AdvanceBy(2 * kWindow + std::chrono::seconds(5));
        queue->AnswerAll();
    }
    state.SetItemsProcessed(state.iterations() * kLimit);
}

}  // namespace

BENCHMARK(AMillionRequests)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(PushToAnswer)->RangeMultiplier(100)->Range(100, 1'000'000);

BENCHMARK_MAIN();
