#include "quillomoxui/utility/ThrowFatalError.h"

#include "moxcore/config/Error.h"

namespace quillomoxui {

void ThrowFatalError(char const* message) {
    moxcore::config::ThrowError(0, message, 0, 0, false, {}, {}, {}, {});
}

}  // namespace quillomoxui
