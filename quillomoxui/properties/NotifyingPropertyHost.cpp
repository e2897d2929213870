#include "quillomoxui/properties/NotifyingPropertyHost.h"

#include <array>
#include <cstdint>

namespace quillomoxui {

std::mutex& PropertyMutex(void const* host) noexcept {
    static std::array<std::mutex, 64> mutexes;
    // The hosts of one object lie some ten bytes apart, those of two objects some hundred.
    auto const address = reinterpret_cast<std::uintptr_t>(host);
    return mutexes[((address >> 4) ^ (address >> 10)) % mutexes.size()];
}

}  // namespace quillomoxui
