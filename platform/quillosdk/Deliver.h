#pragma once

#include <memory>
#include <utility>

#include "moxcore/config/Error.h"
#include "quillosdk/Answer.h"
#include "quillosdk/FailureText.h"
#include "quillosdk/Session.h"

namespace quillosdk {

/// Turns an answer that has arrived into the response object of the request that `task` describes:
/// a successful one with what `read` finds in its body, another one without content. A failure is
/// told, and thrown. The answer's headers go over into the response.
template <class Response, class Content>
std::shared_ptr<Response> MakeResponse(Answer const& arrived, Task const& task,
                                       Content (*read)(std::string& body)) {
    int status = 0;
    try {
        auto& answer = *arrived.Peek();
        status = answer.status;
        bool const successful = status >= 200 && status <= 299;
        if (!successful && !(task.pacedByCaller && status == 429)) ReportRefusal(task, answer);
        auto content = successful ? read(answer.body) : Content();
        return std::make_shared<Response>(status, std::move(answer.headers), std::move(content));
    } catch (...) {
        ReportException(task, std::current_exception(), status);
        throw;
    }
}

/// Sends `request` as it is; the result is its response, made as MakeResponse does.
template <class Response, class Content>
moxcore::async::Future<std::shared_ptr<Response>> Fetch(Session& session, HttpRequest request,
                                                        Task const& task,
                                                        Content (*read)(std::string& body)) {
    moxcore::async::Promise<std::shared_ptr<Response>> promise;
    auto response = promise.GetFuture();
    session.Send(std::move(request),
                 [promise = std::move(promise), task, read](Answer const& arrived) mutable {
                     try {
                         promise.SetValue(MakeResponse<Response>(arrived, task, read));
                     } catch (...) {
                         promise.SetException(std::current_exception());
                     }
                 });
    return response;
}

/// The same, sent again while that is worthwhile (see RetryPolicy).
template <class Response, class Content>
moxcore::async::Future<std::shared_ptr<Response>> FetchWithRetries(
    Session& session, HttpRequest const& request, Task const& task,
    Content (*read)(std::string& body)) {
    return session.SendWithRetries(request).Then([task, read](Answer const& arrived) {
        return MakeResponse<Response>(arrived, task, read);
    });
}

}  // namespace quillosdk
