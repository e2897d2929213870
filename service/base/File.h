#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quilloservice {

/// An open file. Symbolic links are not followed. Functions throw ApiError 507 if the disk or quota
/// is full, ApiError 503 if no descriptor is left, else std::system_error. One thread at a time,
/// except `ReadAt`.
class File {
public:
    enum class Mode { Read, Write };

    /// Opens the file at `path`. `Write` creates it if it is missing.
    File(std::string const& path, Mode mode);
    ~File();
    File(File&& other) noexcept;
    File& operator=(File&&) = delete;

    /// Opens the file at `path` for reading; nothing if it is missing.
    static std::optional<File> OpenExisting(std::string const& path);

    [[nodiscard]] std::int64_t Size() const;

    /// Reads up to `size` bytes at `offset`. Returns their number, 0 at the end.
    std::size_t ReadAt(std::int64_t offset, char* buffer, std::size_t size) const;
    void WriteAt(std::int64_t offset, std::string_view bytes);
    void Truncate(std::int64_t size);

    /// Copies `size` bytes at `from` of another file to `to` in this one.
    void CopyFrom(File const& source, std::int64_t from, std::int64_t size, std::int64_t to);

    /// The first offset from `from` on for which nothing was ever written, `to` at most.
    [[nodiscard]] std::int64_t FirstHole(std::int64_t from, std::int64_t to) const;

    /// Flushes the file to the disk.
    void Sync();

private:
    explicit File(int descriptor) : descriptor(descriptor) {}
    int descriptor;
};

/// Flushes the entries of a directory to the disk.
void SyncDirectory(std::string const& path);

}  // namespace quilloservice
