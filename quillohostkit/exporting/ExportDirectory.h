#pragma once

#include <filesystem>
#include <string>

namespace quillohostkit {

/// A directory in the user's cache for one export: the exporter of a job that was cancelled
/// may go on writing, and does not get in the way of the next one. Deleted with this object, with
/// all that is in it; one that a killed process has left, with the next export. Any thread.
class ExportDirectory {
public:
    /// Makes a directory for an export to `output`. A Failure (Export) when that is impossible.
    explicit ExportDirectory(std::filesystem::path const& output);
    ~ExportDirectory();
    ExportDirectory(ExportDirectory const&) = delete;
    ExportDirectory& operator=(ExportDirectory const&) = delete;

    /// The file to export to; of the output's name.
    [[nodiscard]] std::filesystem::path File() const { return directory / output.filename(); }

    /// Moves the complete file to the output. A Failure (Export) when there is none, it is empty,
    /// or it cannot be moved.
    void Publish() const;

private:
    std::filesystem::path const output;
    std::filesystem::path const directory;
};

}  // namespace quillohostkit
