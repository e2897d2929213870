#include "moxcore/utility/ImmutableString.h"

#include "moxcore/utility/NoDestructor.h"

namespace moxcore::utility {

ImmutableString::ImmutableString(std::string_view text)
    : text(std::make_shared<std::string const>(text)) {}

std::string const& ImmutableString::AsStdString() const noexcept {
    // Never destroyed: names are still compared while the process ends.
    static moxcore::utility::NoDestructor<std::string> const none;
    return text ? *text : *none;
}

std::strong_ordering operator<=>(ImmutableString const& left,
                                 ImmutableString const& right) noexcept {
    if (left.IsNull() || right.IsNull()) return right.IsNull() <=> left.IsNull();
    return *left.text <=> *right.text;
}

bool operator==(ImmutableString const& left, ImmutableString const& right) noexcept {
    return (left <=> right) == 0;
}

}  // namespace moxcore::utility
