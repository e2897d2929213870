#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <span>
#include <string>

namespace quillosdk {

/// An open file, and what it was like when it was opened, so that a change is noticed. Every
/// operation may wait for the disk. Failures are ResultExceptions (UploadResult) that name the
/// file. Any thread.
class FileSnapshot {
public:
    /// Opens the file at `path` (UTF-8). Fails for one that cannot be read, is no regular file, or
    /// is empty.
    explicit FileSnapshot(std::string path);
    ~FileSnapshot();
    FileSnapshot(FileSnapshot const&) = delete;
    FileSnapshot& operator=(FileSnapshot const&) = delete;

    [[nodiscard]] std::uint64_t Size() const { return static_cast<std::uint64_t>(opened.st_size); }

    /// Fills `bytes` with what stands at `offset`. A file that ends before has changed.
    void ReadAt(std::uint64_t offset, std::span<char> bytes) const;

    /// Fails when the open file has another size or modification time than at first.
    void CheckUnchanged() const;

    /// Fails, besides, when the path leads to another file, or to none, by now.
    void CheckStillThere() const;

private:
    [[noreturn]] void FailUnreadable(std::string const& problem) const;
    [[noreturn]] void FailChanged() const;
    [[nodiscard]] bool IsAsOpened(struct stat const& now) const;

    std::string path;
    int descriptor = -1;
    struct stat opened {};
};

}  // namespace quillosdk
