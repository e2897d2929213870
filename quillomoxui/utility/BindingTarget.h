#pragma once

#include <memory>
#include <vector>

#include "quillomoxui/Export.h"
#include "quillomoxui/utility/BindingHandle.h"

namespace quillomoxui::utility {

/// Base of classes that bind to properties: it keeps the handles, so that the bindings end with it,
/// the last one made first. One thread at a time.
class QUILLO_API BindingTarget {
public:
    BindingTarget() = default;
    BindingTarget(BindingTarget const&) = delete;
    BindingTarget& operator=(BindingTarget const&) = delete;
    virtual ~BindingTarget();

    void RetainBinding(std::shared_ptr<BindingHandle> const& handle);

private:
    std::vector<std::shared_ptr<BindingHandle>> bindings;
};

}  // namespace quillomoxui::utility
