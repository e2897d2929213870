#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quilloservice {

/// An open file, never one behind a link. Failures throw ApiError 507 when the disk (or a quota) is
/// full, and std::system_error otherwise. One thread at a time, but for `ReadAt`.
class File {
public:
    enum class Mode { Read, Write };

    /// Opens the file at `path`; `Write` makes it when it is missing.
    File(std::string const& path, Mode mode);
    ~File();
    File(File&& other) noexcept;
    File& operator=(File&&) = delete;

    /// The file at `path` opened for reading, nothing when there is none.
    static std::optional<File> OpenExisting(std::string const& path);

    [[nodiscard]] std::int64_t Size() const;

    /// Reads up to `size` bytes at `offset`; returns how many, 0 at the end.
    std::size_t ReadAt(std::int64_t offset, char* buffer, std::size_t size) const;
    void WriteAt(std::int64_t offset, std::string_view bytes);
    void Truncate(std::int64_t size);

    /// Returns once what was written is on the disk.
    void Sync();

private:
    explicit File(int descriptor) : descriptor(descriptor) {}
    int descriptor;
};

/// Returns once the entries of the directory at `path` are on the disk.
void SyncDirectory(std::string const& path);

}  // namespace quilloservice
