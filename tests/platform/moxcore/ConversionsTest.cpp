#include "moxcore/string/Conversions.h"

#include <gtest/gtest.h>

#include <vector>

using namespace moxcore::string;
using namespace std::string_literals;

namespace {

UTF16String Units(std::u16string const& text) {
    return UTF16String(text.begin(), text.end());
}

TEST(Conversions, CarryTextBothWays) {
    struct Case {
        std::string utf8;
        std::u16string utf16;
    };
    for (auto const& [utf8, utf16] :
         std::vector<Case>{{"", u""},
                           {"Shot 1", u"Shot 1"},
                           {"nul\0in it"s, u"nul\0in it"s},
                           {"\x7F", u"\x7F"},
                           {"Größe", u"Größe"},
                           {"予告編", u"予告編"},
                           {"🎬 cut", u"🎬 cut"},
                           {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
                           {std::string(5000, 'x') + "é", std::u16string(5000, u'x') + u"é"}}) {
        SCOPED_TRACE(utf8.substr(0, 40));
        EXPECT_EQ(StdToUTF16String(utf8), Units(utf16));
        EXPECT_EQ(UTF16toStdString(Units(utf16)), utf8);
    }
}

TEST(Conversions, ReplaceWhatIsNotValid) {
    struct Case {
        char const* description;
        std::string utf8;
        std::u16string utf16;
    };
    for (auto const& [description, utf8, utf16] :
         std::vector<Case>{{"stray continuation byte", "a\x80z", u"a\uFFFDz"},
                           {"cut short at the end", "a\xE4\xBA", u"a\uFFFD"},
                           {"cut short inside", "\xE4\xBAz", u"\uFFFDz"},
                           {"overlong", "\xC0\xAF", u"\uFFFD\uFFFD"},
                           {"surrogate in UTF-8", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
                           {"beyond the last character", "\xF5z", u"\uFFFDz"}})
        EXPECT_EQ(UTF8to16(utf8), Units(utf16)) << description;

    for (UTF16String const& unpaired :
         {UTF16String{'a', 0xD83C, 'z'}, UTF16String{'a', 0xDFAC, 'z'}})
        EXPECT_EQ(UTF16to8(unpaired), "a\uFFFDz");
    EXPECT_EQ(UTF16to8({0xDFAC, 0xD83C}), "\uFFFD\uFFFD") << "a pair the wrong way round";
    EXPECT_EQ(AsciiToUTF16("a\xE9z"), Units(u"a\uFFFDz"));
}

TEST(Conversions, ShortenTextWhereACharacterEnds) {
    struct Case {
        char const* description;
        std::u16string text;
        std::u16string shortened;  // to five characters
    };
    for (auto const& [description, text, shortened] :
         std::vector<Case>{{"nothing", u"", u""},
                           {"short enough", u"abcde", u"abcde"},
                           {"too long", u"abcdef", u"abcd…"},
                           {"short enough, of pairs", u"🎬🎬🎬🎬🎬", u"🎬🎬🎬🎬🎬"},
                           {"too long, of pairs", u"🎬🎬🎬🎬🎬🎬", u"🎬🎬🎬🎬…"},
                           {"an accent after the cut", u"abcd\u0301ef", u"abc…"},
                           {"an accent before the cut", u"abc\u0301def", u"abc\u0301…"},
                           {"a family of three in the way", u"ab👨\u200D👩\u200D👧z", u"ab…"},
                           {"one character without an end", u"a" + std::u16string(9, u'\u0301'),
                            u"a\u0301\u0301\u0301…"},
                           {"half a pair", u"abcdef\xD83C", u"abcd…"}})
        EXPECT_EQ(Shorten(Units(text), 5), Units(shortened)) << description;
}

}  // namespace
