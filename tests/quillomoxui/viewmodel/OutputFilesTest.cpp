#include "quillomoxui/viewmodel/OutputFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "moxcore/string/Conversions.h"
#include "tests/quillomoxui/SignedIn.h"

namespace quillomoxui {
namespace {

using moxcore::string::UTF16to8;
using moxcore::utility::Guid;
namespace fs = std::filesystem;

class OutputFilesTest : public testing::Test, protected OwnDirectories {
protected:
    OutputFiles files;
    UTF16String const name = moxcore::string::AsciiToUTF16("Movie.mp4");
    Guid const first = Guid::CreateUnique();
    Guid const second = Guid::CreateUnique();

    static fs::path Write(OutputFiles::Output const& output) {
        fs::path const path = UTF16to8(output.path);
        std::ofstream(path) << "a movie";
        return path;
    }
};

TEST_F(OutputFilesTest, AMovieIsWrittenOverOnlyOnceItsShareLetsGoOfIt) {
    auto const taken = files.Claim(first, name);
    EXPECT_EQ(taken.path, OutputFiles::PathOf(name));
    EXPECT_EQ(files.Claim(first, name).path, taken.path) << "exported once more";
    files.NoteUpload(first, taken.path);

    auto const aside = files.Claim(second, name);
    EXPECT_NE(aside.path, taken.path);
    EXPECT_EQ(fs::path(UTF16to8(aside.path)).filename(), "Movie.mp4");
    EXPECT_TRUE(fs::exists(fs::path(UTF16to8(aside.path)).parent_path()));

    files.Release(second, taken.path);  // is not its own
    EXPECT_NE(files.Claim(second, name).path, taken.path);
    files.Release(first, taken.path);
    EXPECT_EQ(files.Claim(second, name).path, taken.path);
}

TEST_F(OutputFilesTest, AnOvertakenExportHoldsItsNameForOneMore) {
    auto const overtaken = files.Claim(first, name);
    EXPECT_NE(files.Claim(second, name).path, overtaken.path) << "it may still be written";
    EXPECT_EQ(files.Claim(Guid::CreateUnique(), name).path, overtaken.path);
}

TEST_F(OutputFilesTest, AShareDeletesItsOwnFileAndNoOther) {
    auto const before = files.Claim(first, name);
    files.Release(first, before.path);
    auto const now = files.Claim(second, name);
    auto const movie = Write(now);
    files.Delete(first, before);
    EXPECT_TRUE(fs::exists(movie));

    auto const aside = files.Claim(first, name);
    auto const movieAside = Write(aside);
    files.Delete(first, aside);
    EXPECT_FALSE(fs::exists(movieAside.parent_path()));
    files.Delete(second, now);
    EXPECT_FALSE(fs::exists(movie));
}

}  // namespace
}  // namespace quillomoxui
