#pragma once

#include <memory>
#include <utility>

#include "moxcore/config/Error.h"
#include "quillosdk/Answer.h"
#include "quillosdk/FailureText.h"

namespace quillosdk {

/// Turns an answer into the response object of the request that `task` describes: a successful one
/// with what `read` finds in its body, another one without content. A failure is told.
template <class Response, class Content>
moxcore::async::Future<std::shared_ptr<Response>> Deliver(Answer const& answer, Task task,
                                                          Content (*read)(std::string& body)) {
    return answer.Then([task = std::move(task), read](Answer const& arrived) {
        int status = 0;
        try {
            auto const response = arrived.Get();
            status = response->status;
            bool const successful = status >= 200 && status <= 299;
            if (!successful && !(task.pacedByCaller && status == 429))
                ReportRefusal(task, *response);
            return std::make_shared<Response>(status, response->headers,
                                              successful ? read(response->body) : Content());
        } catch (...) {
            ReportException(task, std::current_exception(), status);
            throw;
        }
    });
}

}  // namespace quillosdk
