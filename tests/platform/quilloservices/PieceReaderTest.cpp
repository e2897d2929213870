#include "quillosdk/PieceReader.h"

#include <gtest/gtest.h>

#include "tests/platform/quilloservices/UploadFixture.h"

namespace {

using namespace quillosdk;

TEST(PieceReaderTest, HashesTheWholeFileInWhateverOrderItsPiecesAreRead) {
    testsupport::TemporaryDirectory const directory;
    auto const movie = testsupport::Movie(1'500'001);
    auto const path = directory.Write("m", movie).string();
    using Stretch = std::pair<std::uint64_t, std::uint64_t>;  // offset and size
    for (auto const& order :
         std::vector<std::vector<Stretch>>{{{0, 1'500'001}},
                                           {{0, 500'000}, {500'000, 1'000'001}},
                                           {{1'000'000, 500'001}, {0, 500'000}, {500'000, 500'000}},
                                           {{0, 500'000}, {100'001, 600'000}, {0, 1}},
                                           {}}) {
        auto const file = std::make_shared<FileSnapshot const>(path);
        PieceReader reader(file);
        for (auto const& [offset, size] : order) {
            auto const piece = reader.Read(offset, size);
            std::string body(piece->body->Size(), '\0');
            piece->body->Read(0, body);
            EXPECT_EQ(body, movie.substr(offset, size));
        }
        EXPECT_EQ(reader.ContentSha256(), testsupport::Sha256Of(movie));
    }
}

}  // namespace
