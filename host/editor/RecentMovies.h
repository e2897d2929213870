#pragma once

#include <QSettings>
#include <filesystem>
#include <vector>

namespace quillohost::editor {

/// The movies that were opened last, the very last first. Kept in the user's settings. Main thread.
class RecentMovies {
public:
    explicit RecentMovies(QSettings& settings) : settings(settings) {}

    /// At most ten, those that are missing now among them.
    [[nodiscard]] std::vector<std::filesystem::path> Get() const;

    /// Puts `movie` first.
    void Add(std::filesystem::path const& movie);
    void Clear();

private:
    QSettings& settings;
};

}  // namespace quillohost::editor
