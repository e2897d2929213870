#include "quillomoxui/properties/NamedPropertyHosts.h"

#include "quillomoxui/properties/NotifyingPropertyHost.inl"

namespace quillomoxui {

#define DEFINE(X, T, Arg)                                            \
    X##NotifyingPropertyHost::~X##NotifyingPropertyHost() = default; \
    T X##NotifyingPropertyHost::Get##X() const {                     \
        return this->GetValue();                                     \
    }                                                                \
    void X##NotifyingPropertyHost::Set##X(Arg newValue) {            \
        this->SetValue(newValue);                                    \
    }                                                                \
    void X##NotifyingPropertyHost::SetInitial##X(Arg newValue) {     \
        this->SetInitialValue(newValue);                             \
    }
#define DEFINE_TYPE(T, Arg, names)                \
    template class NotifyingPropertyHost<T, Arg>; \
    QUILLO_EACH_PROPERTY(DEFINE, T, Arg, names)
#define DEFINE_BY_VALUE(T, names) DEFINE_TYPE(T, T, names)
#define DEFINE_BY_REFERENCE(T, names) DEFINE_TYPE(T, T const&, names)
QUILLO_NAMED_PROPERTIES(DEFINE_BY_VALUE, DEFINE_BY_REFERENCE)

}  // namespace quillomoxui
