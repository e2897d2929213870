#pragma once

#include "quillomoxui/Export.h"

namespace quillomoxui {

/// A binding to a property; dropping the last reference ends it. A delivery that is already queued
/// still comes. Any thread.
class QUILLO_API BindingHandle {
public:
    virtual ~BindingHandle();
};

}  // namespace quillomoxui
