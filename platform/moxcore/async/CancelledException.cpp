#include "moxcore/async/CancelledException.h"

namespace moxcore::async {

CancelledException::~CancelledException() = default;

char const* CancelledException::what() const noexcept {
    return "cancelled";
}

}  // namespace moxcore::async
