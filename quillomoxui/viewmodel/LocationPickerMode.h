#pragma once

#include <cstdint>

namespace quillomoxui {

/// Who opened the location picker.
enum class LocationPickerMode : std::uint32_t {
    Share = 0,  ///< the share popup
    API = 1,    ///< the host, through SelectLocationAPI
};

}  // namespace quillomoxui
