#include "quillomoxui/utility/BindingTarget.h"

namespace quillomoxui::utility {

BindingTarget::~BindingTarget() {
    while (!bindings.empty())
        bindings.pop_back();
}

void BindingTarget::RetainBinding(std::shared_ptr<BindingHandle> const& handle) {
    bindings.push_back(handle);
}

}  // namespace quillomoxui::utility
