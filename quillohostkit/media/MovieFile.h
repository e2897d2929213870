#pragma once

#include <filesystem>

#include "moxcore/utility/Descriptor.h"
#include "quillohostkit/Export.h"

namespace quillohostkit {

/// A movie's file, opened once: whatever its name comes to stand for later, who reads it here reads
/// this file. Any thread.
class QUILLOHOSTKIT_API MovieFile {
public:
    /// A Failure (Export) when `path` is no file that can be read, or an empty one.
    explicit MovieFile(std::filesystem::path const& path);

    /// The canonical path under which it was opened.
    [[nodiscard]] std::filesystem::path const& Path() const { return canonical; }

    /// Open for reading; stays this object's.
    [[nodiscard]] int Number() const { return descriptor.GetNumber(); }

    /// Whether it is what `path` names now.
    [[nodiscard]] bool IsAt(std::filesystem::path const& path) const;

private:
    std::filesystem::path canonical;
    moxcore::utility::Descriptor descriptor;
};

/// `reason` why the movie `path` cannot be shared, as a Failure (Export).
[[noreturn]] void RefuseMovie(std::filesystem::path const& path, std::string const& reason);

}  // namespace quillohostkit
