#pragma once

namespace quillohostkit {

// Texts for files that cannot be used, of {file} and {reason}, what the system says.

inline constexpr char kCannotRead[] =
    "$$$/Vistrel/quillohostkit/File/CannotRead=Cannot read \"{file}\": {reason}.";
inline constexpr char kCannotWrite[] =
    "$$$/Vistrel/quillohostkit/File/CannotWrite=Cannot write \"{file}\": {reason}.";
inline constexpr char kCannotMake[] =
    "$$$/Vistrel/quillohostkit/File/CannotMake=Cannot make \"{file}\": {reason}.";

}  // namespace quillohostkit
