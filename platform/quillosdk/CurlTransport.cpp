#include "quillosdk/CurlTransport.h"

#include <curl/curl.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <new>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "quillocommon/WorkerThread.h"
#include "quillosdk/CryptoThreadScope.h"
#include "quillosdk/CurlExchange.h"

namespace quillosdk {
namespace {

/// Enough for the lists of an opened tree to arrive side by side, and no flood.
constexpr long kConnectionsPerHost = 16;

/// The poll below ends at each wake-up; its timeout only bounds a sleep without any.
constexpr int kPollMilliseconds = 60'000;

struct MultiDeleter {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

using Exchanges = std::vector<std::unique_ptr<CurlExchange>>;

}  // namespace

class CurlTransport::Loop {
public:
    explicit Loop(Clock clock) : shared{std::move(clock), {}} {
        CryptoThreadScope const scope;  // curl sets libcrypto up
        static CURLcode const globalInit = curl_global_init(CURL_GLOBAL_DEFAULT);
        if (globalInit == CURLE_OK) multi.reset(curl_multi_init());
        if (!multi) throw std::bad_alloc();
        curl_multi_setopt(multi.get(), CURLMOPT_MAX_HOST_CONNECTIONS, kConnectionsPerHost);
        curl_multi_setopt(multi.get(), CURLMOPT_PIPELINING, CURLPIPE_NOTHING);
    }
    ~Loop() { Stop(); }
    Loop(Loop const&) = delete;
    Loop& operator=(Loop const&) = delete;

    [[nodiscard]] CurlExchange::Shared& Shared() { return shared; }

    /// False, and `exchange` stays the caller's, once the loop has been stopped.
    bool Add(std::unique_ptr<CurlExchange>& exchange) {
        {
            std::lock_guard lock(mutex);
            if (stopped) return false;
            added.push_back(std::move(exchange));
            if (!thread.joinable())
                thread = quillocommon::StartWorkerThread(
                    [this](std::stop_token const& stop) { Run(stop); });
        }
        curl_multi_wakeup(multi.get());
        return true;
    }

    /// Looks after the pipe of the exchange that has this handle, if there still is one.
    void LookAfterPipe(CURL* handle) {
        {
            std::lock_guard lock(mutex);
            toLookAfter.push_back(handle);
        }
        curl_multi_wakeup(multi.get());
    }

    void Stop() {
        std::jthread ending;
        {
            std::lock_guard lock(mutex);
            stopped = true;
            ending = std::move(thread);
        }
        ending.request_stop();
        curl_multi_wakeup(multi.get());
    }  // `ending` is joined here

private:
    void Run(std::stop_token const& stop) {
        while (!stop.stop_requested()) {
            BeginAdded();
            LookAfterPipes();
            int running = 0;
            curl_multi_perform(multi.get(), &running);
            if (!FinishEnded() && !GiveUpSlow())
                curl_multi_poll(multi.get(), nullptr, 0, MillisecondsToNextLook(), nullptr);
        }
        // Dropping an exchange cancels its future; what the continuations send in turn is refused.
        for (auto const& [handle, exchange] : underWay)
            curl_multi_remove_handle(multi.get(), handle);
        begun.clear();
        underWay.clear();
        TakeAdded().clear();
    }

    [[nodiscard]] Exchanges TakeAdded() {
        std::lock_guard lock(mutex);
        return std::exchange(added, {});
    }

    void BeginAdded() {
        for (auto& exchange : TakeAdded()) {
            CURL* const handle = exchange->Handle();
            exchange->SetOnBegin([this, it = exchange.get()] { begun.insert(it); });
            if (curl_multi_add_handle(multi.get(), handle) == CURLM_OK)
                underWay.emplace(handle, std::move(exchange));
            else
                CurlExchange::Finish(std::move(exchange), CURLE_FAILED_INIT);
        }
    }

    /// Whether any has ended: its continuations may have sent more, which then need not wait for
    /// their wake-up.
    bool FinishEnded() {
        bool any = false;
        int left = 0;
        while (CURLMsg const* const message = curl_multi_info_read(multi.get(), &left)) {
            if (message->msg != CURLMSG_DONE) continue;
            CURLcode const code = message->data.result;
            CurlExchange::Finish(TakeOut(message->easy_handle), code);
            any = true;
        }
        return any;
    }

    [[nodiscard]] std::unique_ptr<CurlExchange> TakeOut(CURL* handle) {
        curl_multi_remove_handle(multi.get(), handle);
        auto exchange = std::move(underWay.extract(handle).mapped());
        begun.erase(exchange.get());
        return exchange;
    }

    void LookAfterPipes() {
        std::vector<CURL*> handles;
        {
            std::lock_guard lock(mutex);
            handles.swap(toLookAfter);
        }
        for (CURL* const handle : handles) {
            auto const found = underWay.find(handle);
            if (found == underWay.end() || !found->second->Pipe()) continue;
            if (found->second->Pipe()->IsClosed())
                TakeOut(handle).reset();  // cancels its future
            else
                found->second->Resume();
        }
    }

    /// Whether any has been.
    bool GiveUpSlow() {
        std::vector<CURL*> slow;
        for (auto* const exchange : begun)
            if (exchange->IsTooSlow()) slow.push_back(exchange->Handle());
        for (CURL* const handle : slow)
            CurlExchange::Finish(TakeOut(handle), CURLE_OPERATION_TIMEDOUT);
        return !slow.empty();
    }

    [[nodiscard]] int MillisecondsToNextLook() const {
        using std::chrono::milliseconds;
        if (begun.empty()) return kPollMilliseconds;
        auto const now = shared.clock();
        auto next = now + milliseconds(kPollMilliseconds);
        for (auto const* const exchange : begun)
            next = std::min(next, exchange->NextLook());
        return static_cast<int>(std::chrono::ceil<milliseconds>(std::max(next - now, {})).count());
    }

    CurlExchange::Shared shared;  // the loop's thread

    std::unique_ptr<CURLM, MultiDeleter> multi;               // the loop's thread; but for wake-ups
    std::map<CURL*, std::unique_ptr<CurlExchange>> underWay;  // the loop's thread
    std::set<CurlExchange*> begun;  // the loop's thread; of those, what has a connection

    std::mutex mutex;
    Exchanges added;                 // guarded by mutex
    std::vector<CURL*> toLookAfter;  // guarded by mutex
    bool stopped = false;            // guarded by mutex
    std::jthread thread;             // guarded by mutex
};

CurlTransport::CurlTransport(Clock clock) : loop(std::make_shared<Loop>(std::move(clock))) {}

CurlTransport::~CurlTransport() {
    Stop();  // here: a pipe's reader may hold the loop for a moment longer
}

moxcore::async::Future<std::shared_ptr<HttpResponse>> CurlTransport::Send(HttpRequest request) {
    std::unique_ptr<CurlExchange> exchange;
    try {
        exchange = std::make_unique<CurlExchange>(std::move(request), loop->Shared());
    } catch (...) {
        moxcore::async::Promise<std::shared_ptr<HttpResponse>> promise;
        promise.SetException(std::current_exception());
        return promise.GetFuture();
    }
    auto future = exchange->GetFuture();
    if (auto* const pipe = exchange->Pipe())
        pipe->SetWakeUp([weak = std::weak_ptr(loop), handle = exchange->Handle()] {
            if (auto const alive = weak.lock()) alive->LookAfterPipe(handle);
        });
    loop->Add(exchange);  // one that is not taken cancels its future here
    return future;
}

void CurlTransport::Stop() {
    loop->Stop();
}

}  // namespace quillosdk
