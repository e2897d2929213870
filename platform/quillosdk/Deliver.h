#pragma once

#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "moxcore/config/Error.h"
#include "quillosdk/Answer.h"
#include "quillosdk/FailureText.h"
#include "quillosdk/Session.h"

namespace quillosdk {

/// Turns an answer that has arrived into the response object of the request that `task` describes:
/// a successful one with what `read` finds in its body, another one with the refusal. A failure is
/// reported, and thrown as it was reported. The answer's headers go over into the response.
template <class Response, class Content>
std::shared_ptr<Response> MakeResponse(Answer const& arrived, Task const& task,
                                       Content (*read)(std::string& body)) {
    int status = 0;
    try {
        auto& answer = *arrived.Peek();
        status = answer.status;
        bool const successful = status >= 200 && status <= 299;
        std::string refusal;
        if (!successful && !(task.pacedByCaller && status == 429))
            refusal = ReportRefusal(task, answer);
        auto content = successful ? read(answer.body) : Content();
        auto response =
            std::make_shared<Response>(status, std::move(answer.headers), std::move(content));
        response->SetRefusal(std::move(refusal));
        return response;
    } catch (...) {
        std::rethrow_exception(ReportException(task, std::current_exception(), status));
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
