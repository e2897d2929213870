#include "moxcore/string/NaturalOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <sstream>

#include "moxcore/string/Conversions.h"

using namespace moxcore::string;
using CaseInsensitive::NaturalOrder;
using CaseInsensitive::NaturalStringLessThan;

namespace {

using Names = std::vector<UTF16String>;

std::vector<std::size_t> Order(Names const& names) {
    std::vector<UTF16String const*> pointers;
    for (auto const& name : names)
        pointers.push_back(&name);
    return NaturalOrder(pointers);
}

/// Every two names must stand as the comparison has them, and every name must stand once.
void ExpectInOrder(Names const& names) {
    auto order = Order(names);
    for (std::size_t later = 1; later < order.size(); ++later)
        for (std::size_t earlier = 0; earlier < later; ++earlier)
            ASSERT_FALSE(NaturalStringLessThan(names[order[later]], names[order[earlier]]))
                << UTF16to8(names[order[later]]) << " stands after "
                << UTF16to8(names[order[earlier]]);
    std::sort(order.begin(), order.end());
    std::vector<std::size_t> positions(names.size());
    std::iota(positions.begin(), positions.end(), 0);
    EXPECT_EQ(order, positions);
}

TEST(NaturalOrder, PutsNamesAsAReaderWould) {
    std::vector<std::vector<char const*>> const chains{
        {"Shot 1", "Shot 9", "shot 10"},
        {"", " ", "1", "02", "10", "a"},
        {"a1b2", "a1b10", "a2b1", "A10b1"},
        {"take 99999999999999999998", "take 99999999999999999999", "take 100000000000000000000"},
        {"cote", "coté", "côte", "Côté"},
        {"Muller", "Müller", "Mullerin"},
        {"Zebra", "Ωmega", "Сцена", "予告編"},
        {"x", "x 1", "x 1 (copy)", "xy"}};
    for (auto const& chain : chains)
        for (std::size_t i = 1; i < chain.size(); ++i) {
            SCOPED_TRACE(std::string(chain[i - 1]) + ", " + chain[i]);
            auto const before = UTF8to16(chain[i - 1]);
            auto const after = UTF8to16(chain[i]);
            EXPECT_TRUE(NaturalStringLessThan(before, after));
            EXPECT_FALSE(NaturalStringLessThan(after, before));
            EXPECT_EQ(Order({after, before}), (std::vector<std::size_t>{1, 0}));
            EXPECT_EQ(Order({after, before, UTF16String()}).back(), 0u);
        }
    EXPECT_TRUE(Order({}).empty());
    EXPECT_EQ(Order({UTF8to16("one")}), std::vector<std::size_t>{0});
}

TEST(NaturalOrder, TakesAsEqualWhatReadsTheSame) {
    for (auto const& [a, b] : std::vector<std::pair<char const*, char const*>>{
             {"SHOT 1", "shot 1"},
             {"shot 007", "Shot 7"},
             {"MÜLLER 1", "müller 01"},
             {"caf\u00E9", "cafe\u0301"},
             {"a\u0323\u0302", "a\u0302\u0323"},  // accents that do not touch, in either order
             {"", ""}}) {
        EXPECT_FALSE(NaturalStringLessThan(UTF8to16(a), UTF8to16(b))) << a << ", " << b;
        EXPECT_FALSE(NaturalStringLessThan(UTF8to16(b), UTF8to16(a))) << a << ", " << b;
    }
}

TEST(NaturalOrder, AgreesWithTheComparisonOnAnyNames) {
    Names pieces{UTF16String(300, '9'), {' '}, {0}, {0xD800}, {0xDFFF}, {0xFFFF}};
    std::istringstream list(
        "Shot shot é e\u0301 \u0323 Ω 予告 カ か\u3099 🎬 ٣ 0 12 0099 - _ . ß 한 \u0E40\u0E01 "
        "ש\u05C1 \uFFFE \u200D \u00A0");
    for (std::string piece; list >> piece;)
        pieces.push_back(UTF8to16(piece));
    std::mt19937 random(20240301);
    for (int round = 0; round < 12; ++round) {
        Names names;
        for (int i = 0; i < 150; ++i) {
            UTF16String name;
            for (auto length = random() % 5; length > 0; --length)
                name += pieces[random() % pieces.size()];
            names.push_back(name);
        }
        ExpectInOrder(names);
    }
}

TEST(NaturalOrder, AgreesWithTheComparisonOnNamesOfAsciiAlone) {
    std::mt19937 random(20240301);
    Names pieces{{}};
    for (unsigned short unit = ' '; unit <= '~'; ++unit)
        pieces.push_back({unit});
    // Numbers as long as they may be, and what only the collator can make keys of.
    for (UTF16String const& rare : {UTF16String(), UTF16String(300, '0'), UTF16String(254, '9'),
                                    UTF16String{'\t'}, UTF16String(255, '9')}) {
        pieces.push_back(rare);
        Names names;
        for (int i = 0; i < 400; ++i) {
            UTF16String name;
            for (auto length = random() % 6; length > 0; --length)
                name += random() % 3 == 0
                            ? UTF16String{static_cast<unsigned short>('0' + random() % 3)}
                            : pieces[random() % pieces.size()];
            names.push_back(name);
        }
        ExpectInOrder(names);
    }
}

TEST(NaturalOrder, LooksPastWhatLongNamesHaveInCommon) {
    UTF16String const common(200'000, 'x');
    Names names(4, common);
    for (char const last : {'c', 'a', 'b'})
        names.push_back(common + UTF16String{static_cast<unsigned char>(last)});
    names.emplace_back();
    ExpectInOrder(names);
}

}  // namespace
