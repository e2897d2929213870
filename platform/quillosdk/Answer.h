#pragma once

#include <memory>

#include "moxcore/async/Future.h"
#include "quillosdk/Transport.h"

namespace quillosdk {

/// The pending answer to a request.
using Answer = moxcore::async::Future<std::shared_ptr<HttpResponse>>;
using AnswerPromise = moxcore::async::Promise<std::shared_ptr<HttpResponse>>;

/// Completes `promise` as `answer`, which is complete, has been.
inline void Forward(Answer const& answer, AnswerPromise& promise) {
    if (auto const exception = answer.GetException())
        promise.SetException(exception);
    else
        promise.SetValue(answer.Get());
}

}  // namespace quillosdk
