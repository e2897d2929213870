#include "moxui/backend/detail/CallFromQt.h"

#include <utility>

#include "moxcore/threads/AsyncCallFromMainThread.h"

namespace moxui::backend {

void PostException(std::exception_ptr exception) noexcept {
    try {
        moxcore::threads::AsyncCallFromMainThread(
            [thrown = std::move(exception)] { std::rethrow_exception(thrown); }, 0);
    } catch (...) {
        // Out of memory: nobody can be told.
    }
}

}  // namespace moxui::backend
