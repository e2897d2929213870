#include "service/base/Text.h"

#include <gtest/gtest.h>

namespace quilloservice {
namespace {

TEST(Text, DecodesCanonicalBase64Only) {
    struct Row {
        std::string text;
        std::optional<std::string> bytes;
    };
    for (Row const& row : std::vector<Row>{
             {"", ""},
             {"Zg==", "f"},
             {"Zm8=", "fo"},
             {"Zm9v", "foo"},
             {"+/8=", "\xFB\xFF"},
             {"Zg", std::nullopt},    // padding missing
             {"Zh==", std::nullopt},  // unused bits are set
             {"Zm9v====", std::nullopt},
             {"Z===", std::nullopt},
             {"Zm 9v===", std::nullopt},
             {"Zm-_", std::nullopt},
         }) {
        EXPECT_EQ(FromBase64(row.text), row.bytes) << row.text;
    }
}

TEST(Text, ParsesPlainNumbersOnly) {
    EXPECT_EQ(ParseNumber("0"), 0);
    EXPECT_EQ(ParseNumber("9223372036854775807"), INT64_MAX);
    for (char const* text : {"", "-1", "-0", "+1", " 1", "1 ", "0x10", "1e3", "1.0",
                             "9223372036854775808", "99999999999999999999999"}) {
        EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
    }
}

TEST(Text, ShowsWellFormedUtf8Only) {
    for (char const* text :
         {"plain", "Größe", "撮影", "🎬", "مشهد", "\xEF\xBF\xBF", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(IsShowableText(text)) << text;
    }
    for (std::string_view text : {
             std::string_view("a\0b", 3),
             std::string_view("\x80"),              // a continuation byte alone
             std::string_view("\xC3"),              // a truncated sequence
             std::string_view("\xC0\xAF"),          // overlong
             std::string_view("\xE0\x80\xAF"),      // overlong
             std::string_view("\xF0\x80\x80\xAF"),  // overlong
             std::string_view("\xED\xA0\x80"),      // a surrogate
             std::string_view("\xF4\x90\x80\x80"),  // beyond Unicode
             std::string_view("\xFF"),
         }) {
        EXPECT_FALSE(IsShowableText(text)) << ToHex(text);
    }
}

}  // namespace
}  // namespace quilloservice
