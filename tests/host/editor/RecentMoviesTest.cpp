#include "host/editor/RecentMovies.h"

#include <gmock/gmock.h>

#include "tests/support/TemporaryDirectory.h"

namespace quillohost::editor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(RecentMovies, ComeBackTheLastFirstAndNoneTwice) {
    testsupport::TemporaryDirectory const directory;
    auto const file = QString::fromStdString((directory.Path() / "editor.ini").string());
    {
        QSettings settings(file, QSettings::IniFormat);
        RecentMovies movies(settings);
        for (char const* name : {"/a.mov", "/b, c; \"d\".mov", "/\u6771\u4eac.mov", "/a.mov"})
            movies.Add(name);
    }
    QSettings settings(file, QSettings::IniFormat);
    RecentMovies movies(settings);
    EXPECT_THAT(movies.Get(), ElementsAre("/a.mov", "/\u6771\u4eac.mov", "/b, c; \"d\".mov"));
    for (int i = 0; i < 20; ++i)
        movies.Add("/" + std::to_string(i));
    EXPECT_EQ(movies.Get().size(), 10U);
    EXPECT_EQ(movies.Get().front(), "/19");
    movies.Clear();
    EXPECT_THAT(movies.Get(), IsEmpty());
}

}  // namespace
}  // namespace quillohost::editor
