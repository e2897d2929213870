#include "host/editor/RecentMovies.h"

#include <QFile>
#include <QStringList>

namespace quillohost::editor {
namespace {

constexpr char const* kKey = "recent_movies";
constexpr int kMost = 10;

}  // namespace

std::vector<std::filesystem::path> RecentMovies::Get() const {
    std::vector<std::filesystem::path> movies;
    for (auto const& name : settings.value(kKey).toStringList().mid(0, kMost))
        movies.emplace_back(QFile::encodeName(name).toStdString());
    return movies;
}

void RecentMovies::Add(std::filesystem::path const& movie) {
    auto const name = QFile::decodeName(movie.c_str());
    auto names = settings.value(kKey).toStringList();
    names.removeAll(name);
    names.prepend(name);
    settings.setValue(kKey, names.mid(0, kMost));
}

void RecentMovies::Clear() {
    settings.remove(kKey);
}

}  // namespace quillohost::editor
