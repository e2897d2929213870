#include "moxcore/string/NaturalOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <thread>

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
            auto const before = UTF8to16(chain[i - 1]);
            auto const after = UTF8to16(chain[i]);
            EXPECT_TRUE(NaturalStringLessThan(before, after)) << chain[i - 1] << ", " << chain[i];
            EXPECT_FALSE(NaturalStringLessThan(after, before)) << chain[i - 1] << ", " << chain[i];
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
    Names const pieces{UTF8to16("Shot "),       UTF8to16("shot"),
                       UTF8to16("é"),           UTF8to16("e\u0301"),
                       UTF8to16("\u0323"),      UTF8to16("Ω"),
                       UTF8to16("予告"),        UTF8to16("カ"),
                       UTF8to16("か\u3099"),    UTF8to16("🎬"),
                       UTF8to16("👩‍🎤"), UTF8to16("٣"),
                       UTF8to16("0"),           UTF8to16("12"),
                       UTF8to16("0099"),        UTF8to16("-"),
                       UTF8to16("_"),           UTF8to16("."),
                       UTF8to16(" "),           UTF8to16("ß"),
                       UTF8to16("한"),          UTF8to16("\u0E40\u0E01"),
                       UTF8to16("ש\u05C1"),     UTF16String{0xD800},
                       UTF16String{0xDFFF},     UTF16String{0},
                       UTF16String{0xFFFE},     UTF16String{0xFFFF},
                       UTF16String(300, '9'),   UTF8to16("\u200D")};
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

TEST(NaturalOrder, LooksPastWhatLongNamesHaveInCommon) {
    UTF16String const common(200'000, 'x');
    Names names(4, common);
    for (char const last : {'c', 'a', 'b'})
        names.push_back(common + UTF16String{static_cast<unsigned char>(last)});
    names.emplace_back();
    ExpectInOrder(names);
}

TEST(NaturalOrder, ServesSeveralThreads) {
    Names const names{UTF8to16("b 2"), UTF8to16("B 10"), UTF8to16("a"), UTF8to16("b 1")};
    std::vector<std::vector<std::size_t>> orders(3);
    std::vector<std::thread> threads;
    for (auto& order : orders)
        threads.emplace_back([&names, &order] { order = Order(names); });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(orders, std::vector(3, std::vector<std::size_t>{2, 3, 0, 1}));
}

}  // namespace
