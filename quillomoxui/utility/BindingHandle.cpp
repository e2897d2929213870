#include "quillomoxui/utility/BindingHandle.h"

namespace quillomoxui {

BindingHandle::~BindingHandle() = default;

}  // namespace quillomoxui
