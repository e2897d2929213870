#include "tests/support/ScriptedTransport.h"

#include <deque>
#include <stdexcept>
#include <utility>

#include "moxcore/config/Error.h"
#include "quillocommon/ServiceAddress.h"

namespace testsupport {

using quillosdk::HeaderFields;
using quillosdk::HttpRequest;
using quillosdk::HttpResponse;
using Promise = moxcore::async::Promise<std::shared_ptr<HttpResponse>>;

class ScriptedTransport::Line : public quillosdk::Transport {
public:
    moxcore::async::Future<std::shared_ptr<HttpResponse>> Send(HttpRequest request) override {
        std::size_t index = 0;
        Responder answerNow;
        {
            std::lock_guard lock(mutex);
            index = requests.size();
            requests.push_back(std::move(request));
            promises.push_back(std::make_shared<Promise>());
            answerNow = responder;
        }
        changed.notify_all();
        auto const promise = PromiseAt(index);
        if (auto* const pipe = At(index).answerPipe.get())
            pipe->SetWakeUp([pipe, weak = std::weak_ptr(promise)] {
                auto const waiting = weak.lock();
                if (waiting && pipe->IsClosed()) waiting->Cancel();
            });
        auto future = promise->GetFuture();
        if (answerNow) {
            try {
                if (auto answer = answerNow(At(index)))
                    promise->SetValue(std::make_shared<HttpResponse>(*std::move(answer)));
            } catch (...) {
                promise->SetException(std::current_exception());
            }
        }
        return future;
    }

    [[nodiscard]] std::size_t Count() const {
        std::lock_guard lock(mutex);
        return requests.size();
    }

    void WaitForCount(std::size_t count) const {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return requests.size() >= count; });
    }

    [[nodiscard]] HttpRequest const& At(std::size_t index) const {
        std::lock_guard lock(mutex);
        return requests.at(index);  // a deque: it stays where it is
    }

    [[nodiscard]] std::shared_ptr<Promise> PromiseAt(std::size_t index) const {
        std::lock_guard lock(mutex);
        return promises.at(index);
    }

    void SetResponder(Responder newResponder) {
        std::lock_guard lock(mutex);
        responder = std::move(newResponder);
    }

private:
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    std::deque<HttpRequest> requests;               // guarded by mutex
    std::deque<std::shared_ptr<Promise>> promises;  // guarded by mutex
    Responder responder;                            // guarded by mutex
};

std::string HeaderOf(HttpRequest const& request, std::string const& name) {
    HeaderFields fields = request.headers;
    if (request.commonHeaders)
        fields.insert(fields.end(), request.commonHeaders->begin(), request.commonHeaders->end());
    for (auto const& [header, value] : fields) {
        if (header == name) return value;
    }
    return {};
}

std::string BodyOf(HttpRequest const& request) {
    if (!request.bodySource) return request.body ? *request.body : std::string();
    std::string bytes(request.bodySource->Size(), '\0');
    request.bodySource->Read(0, bytes);
    return bytes;
}

ScriptedTransport::ScriptedTransport()
    : line(std::make_shared<Line>()), addressBefore(quillocommon::GetServiceAddress()) {
    quillosdk::Transport::Set(line);
    quillocommon::SetServiceAddress(kAddress);
}

ScriptedTransport::~ScriptedTransport() {
    quillosdk::Transport::Set(nullptr);
    quillocommon::SetServiceAddress(addressBefore);
}

std::size_t ScriptedTransport::Count() const {
    return line->Count();
}

void ScriptedTransport::WaitForCount(std::size_t count) const {
    line->WaitForCount(count);
}

HttpRequest const& ScriptedTransport::At(std::size_t index) const {
    return line->At(index);
}

std::string ScriptedTransport::LineAt(std::size_t index) const {
    auto const& request = At(index);
    std::string const address = kAddress;
    auto const path =
        request.url.starts_with(address) ? request.url.substr(address.size()) : request.url;
    return request.method + " " + path;
}

std::string ScriptedTransport::HeaderAt(std::size_t index, std::string const& name) const {
    return HeaderOf(At(index), name);
}

void ScriptedTransport::Answer(std::size_t index, int status, std::string body,
                               quillosdk::Headers headers) {
    auto answer = std::make_shared<HttpResponse>();
    answer->status = status;
    answer->headers = std::move(headers);
    answer->body = std::move(body);
    if (!line->PromiseAt(index)->SetValue(std::move(answer)))
        throw std::logic_error("request " + std::to_string(index) + " has its answer already");
}

void ScriptedTransport::Fail(std::size_t index, moxcore::config::Result result,
                             std::string const& message) {
    line->PromiseAt(index)->SetFailed(result, message);
}

void ScriptedTransport::Cancel(std::size_t index) {
    line->PromiseAt(index)->Cancel();
}

moxcore::async::Future<std::shared_ptr<HttpResponse>> ScriptedTransport::FutureAt(
    std::size_t index) const {
    return line->PromiseAt(index)->GetFuture();
}

void ScriptedTransport::ReportSent(std::size_t index, std::uint64_t bytes) {
    At(index).onBytesSent(bytes);
}

bool ScriptedTransport::SendBody(std::size_t index, std::string const& bytes) {
    return At(index).answerPipe->Offer(bytes) != quillosdk::BodyPipe::Offered::Full;
}

void ScriptedTransport::SetResponder(Responder responder) {
    line->SetResponder(std::move(responder));
}

}  // namespace testsupport
