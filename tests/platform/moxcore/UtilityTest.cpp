#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <memory>
#include <sstream>
#include <unordered_set>
#include <vector>

#include "moxcore/debug/DebugDatabase.h"
#include "moxcore/string/Conversions.h"
#include "moxcore/utility/FileUtils.h"
#include "moxcore/utility/Guid.h"
#include "moxcore/utility/UniqueFunction.h"

using namespace moxcore;
using utility::Guid;

namespace {

TEST(Guid, ParsesOnlyTheCanonicalForm) {
    // What does not parse is shown as the null Guid.
    std::string const null = "00000000-0000-0000-0000-000000000000";
    for (auto const& [text, parsed] : std::vector<std::pair<std::string, std::string>>{
             {"01234567-89ab-cdef-0123-456789abcdef", "01234567-89ab-cdef-0123-456789abcdef"},
             {"FEDCBA98-7654-3210-fedc-BA9876543210", "fedcba98-7654-3210-fedc-ba9876543210"},
             {null, null},
             {"", null},
             {"0123456789abcdef0123456789abcdef", null},
             {"{01234567-89ab-cdef-0123-456789abcdef}", null},
             {"01234567-89ab-cdef-0123-456789abcde", null},
             {"01234567-89ab-cdef-0123-456789abcdef0", null},
             {"0123456-789ab-cdef-0123-456789abcdef", null},
             {"01234567-89ab-cdef-0123_456789abcdef", null},
             {"01234567-89ab-cdef-0123-456789abcdeg", null},
             {"01234567-89ab-cdef-0123-4567 9abcdef", null}}) {
        SCOPED_TRACE(text);
        Guid const guid(text);
        EXPECT_EQ(guid.IsNull(), parsed == null);
        std::ostringstream written;
        written << guid;
        EXPECT_EQ(written.str(), parsed);
    }
}

TEST(Guid, KnowsADigitWhereverItStands) {
    std::string const text = "11111111-1111-1111-1111-111111111111";
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (text[place] == '-') continue;
        for (int c = 0; c < 256; ++c) {
            auto changed = text;
            changed[place] = static_cast<char>(c);
            bool const isDigit = c < 0x80 && std::isxdigit(c) != 0;
            auto const parsed = Guid(changed).AsStdString();
            EXPECT_EQ(Guid(changed).IsNull(), !isDigit) << c << " at " << place;
            EXPECT_EQ(parsed[place], isDigit ? std::tolower(c) : '0') << c << " at " << place;
        }
    }
}

TEST(Guid, CreatesUniqueOnesOfVersion4) {
    std::unordered_set<Guid> distinct;
    for (int i = 0; i < 500; ++i) {
        auto const guid = Guid::CreateUnique();
        distinct.insert(guid);
        std::string const text = guid.AsStdString();
        EXPECT_EQ(Guid(text), guid);
        EXPECT_EQ(text[14], '4') << text;
        EXPECT_NE(std::string("89ab").find(text[19]), std::string::npos) << text;
    }
    EXPECT_EQ(distinct.size(), 500u);
}

/// A function of `size` bytes that counts what lives of it.
template <std::size_t size>
struct Counted {
    explicit Counted(int& alive) : alive(&alive) { ++alive; }
    Counted(Counted&& other) noexcept : alive(other.alive), calls(other.calls) { ++*alive; }
    Counted& operator=(Counted&&) = delete;
    ~Counted() { --*alive; }
    int operator()(std::unique_ptr<int> argument) { return *argument + ++calls; }

    int* alive;
    int calls = 0;
    std::array<char, size> ballast{};
};

template <std::size_t size>
void TestUniqueFunction() {
    using Function = utility::UniqueFunction<int(std::unique_ptr<int>)>;
    int alive = 0;
    {
        Function function = Counted<size>(alive);
        EXPECT_EQ(alive, 1);
        EXPECT_EQ(function(std::make_unique<int>(10)), 11);
        Function other = std::move(function);
        EXPECT_EQ(alive, 1);
        EXPECT_FALSE(function);
        EXPECT_EQ(other(std::make_unique<int>(10)), 12) << "it is the same one";
        function = Counted<size>(alive);
        other = std::move(function);
        EXPECT_EQ(alive, 1) << "the one before is gone";
        EXPECT_EQ(other(std::make_unique<int>(10)), 11);
    }
    EXPECT_EQ(alive, 0);
}

TEST(UniqueFunction, HasOneOwnerInPlaceOrNot) {
    TestUniqueFunction<1>();
    TestUniqueFunction<500>();
}

TEST(FileUtils, ReplacesWhatMayNotStandInAFileName) {
    for (auto const& [name, legal] : std::vector<std::pair<std::string, std::string>>{
             {"Spot 1.mp4", "Spot 1.mp4"},
             {"a/b\\c:d*e?f\"g<h>i|j", "a_b_c_d_e_f_g_h_i_j"},
             {std::string("\0\x1F\x7F tab\t", 8), "___ tab_"},
             {"..", ".."},
             {"Größe – 予告編 🎬?", "Größe – 予告編 🎬_"},
             {"", ""}})
        EXPECT_EQ(string::UTF16to8(utility::FileUtils::ReplaceIllegalFileNameCharacters(
                      string::UTF8to16(name), '_')),
                  legal);
}

TEST(FileUtils, ShortensBetweenTwoCharacters) {
    auto const cut = [](string::UTF16String const& name) {
        return utility::FileUtils::ReplaceIllegalFileNameCharacters(name, '_');
    };
    struct Row {
        std::size_t before;  // bytes, of "a"
        char const* end;
        char const* kept;  // of the end
    };
    constexpr Row kRows[] = {{250, "b", "b"},  {251, "b", ""},      {250, "é", ""},
                             {249, "éb", "é"}, {248, "予告", "予"}, {247, "🎬🎬", "🎬"},
                             {248, "🎬", ""}};
    for (auto const& row : kRows) {
        auto const start = std::string(row.before, 'a');
        EXPECT_EQ(string::UTF16to8(cut(string::UTF8to16(start + row.end))), start + row.kept)
            << row.before << " " << row.end;
    }
    // Half a pair is written as U+FFFD, which takes three.
    string::UTF16String half(248, 'a');
    half += {0xD83C, 'a'};
    EXPECT_EQ(cut(half).size(), 249u);
}

TEST(DebugDatabase, AnswersTheFallbackForWhatIsAbsentOrOfAnotherType) {
    auto& database = debug::DebugDatabase::Instance();
    database.SetEntry("switch", true);
    EXPECT_TRUE(database.GetEntryAs<bool>("switch", false));
    EXPECT_EQ(database.GetEntryAs<long>("switch", 5), 5);
    database.SetEntry("switch", std::string("text"));
    EXPECT_FALSE(database.GetEntryAs<bool>("switch", false));
    EXPECT_EQ(database.GetEntryAs<std::string>("switch", ""), "text");
    database.RemoveEntry("switch");
    EXPECT_TRUE(database.GetEntryAs<bool>("switch", true));
}

}  // namespace
