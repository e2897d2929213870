#include "quillomoxui/properties/NamedPropertyHosts.h"

#include "quillomoxui/properties/NotifyingPropertyHost.inl"

namespace quillomoxui {

#define INSTANTIATE_BY_VALUE(T) template class NotifyingPropertyHost<T, T>;
#define INSTANTIATE_BY_REFERENCE(T) template class NotifyingPropertyHost<T, T const&>;
QUILLO_PROPERTY_TYPES(INSTANTIATE_BY_VALUE, INSTANTIATE_BY_REFERENCE)

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
#define DEFINE_BY_VALUE(X, T) DEFINE(X, T, T)
#define DEFINE_BY_REFERENCE(X, T) DEFINE(X, T, T const&)
QUILLO_NAMED_PROPERTIES(DEFINE_BY_VALUE, DEFINE_BY_REFERENCE)

}  // namespace quillomoxui
