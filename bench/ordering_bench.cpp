// Natural order of names beside what ICU offers for the same: keys made once and sorted with
// memcmp, and a sort with the collator's comparison.

#include <benchmark/benchmark.h>
#include <unicode/char16ptr.h>
#include <unicode/coll.h>
#include <unicode/locid.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "moxcore/string/Conversions.h"
#include "moxcore/string/NaturalOrder.h"

namespace {

using moxcore::string::UTF16String;
using moxcore::string::CaseInsensitive::NaturalOrder;
using Order = std::vector<std::size_t>;
using Names = std::vector<UTF16String>;

/// Names as an editor's folders hold them: numbered shots and takes, dates, a few other scripts.
Names MakeNames(std::size_t count) {
    static constexpr std::array<char const*, 10> kWords{
        "Shot ",         "shot ",   "Interview Müller, take ",
        "B-Roll Hafen ", "IMG_",    "Final ",
        "Trailer v",     "予告編 ", "Сцена ",
        "2024-03-"};
    static constexpr std::array<char const*, 5> kEndings{"", ".mp4", " (copy)", " – graded",
                                                         ".MOV"};
    std::mt19937 random(7);
    Names names;
    for (std::size_t i = 0; i < count; ++i)
        names.push_back(moxcore::string::UTF8to16(kWords[random() % kWords.size()] +
                                                  std::to_string(random() % 100000) +
                                                  kEndings[random() % kEndings.size()]));
    return names;
}

Names const& NamesFor(benchmark::State const& state) {
    static std::map<std::int64_t, Names> made;
    auto& names = made[state.range(0)];
    if (names.empty()) names = MakeNames(static_cast<std::size_t>(state.range(0)));
    return names;
}

std::unique_ptr<icu::Collator> MakeCollator() {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(
        icu::Collator::createInstance(icu::Locale::getRoot(), status));
    collator->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status);
    collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    collator->setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, status);
    if (U_FAILURE(status)) std::abort();
    return collator;
}

Order Positions(std::size_t count) {
    Order order(count);
    std::iota(order.begin(), order.end(), 0);
    return order;
}

Order OrderByLibrary(Names const& names) {
    std::vector<UTF16String const*> pointers;
    pointers.reserve(names.size());
    for (auto const& name : names)
        pointers.push_back(&name);
    return NaturalOrder(pointers);
}

Order OrderByKeys(icu::Collator const& collator, Names const& names) {
    std::vector<std::vector<std::uint8_t>> keys(names.size());
    std::array<std::uint8_t, 1024> buffer{};
    for (std::size_t i = 0; i < names.size(); ++i) {
        auto const length = collator.getSortKey(
            icu::ConstChar16Ptr(names[i].data()), static_cast<std::int32_t>(names[i].size()),
            buffer.data(), static_cast<std::int32_t>(buffer.size()));
        keys[i].assign(buffer.begin(), buffer.begin() + length);
    }
    Order order = Positions(names.size());
    std::sort(order.begin(), order.end(), [&keys](std::size_t a, std::size_t b) {
        auto const length = std::min(keys[a].size(), keys[b].size());
        int const difference = std::memcmp(keys[a].data(), keys[b].data(), length);
        return difference != 0 ? difference < 0 : keys[a].size() < keys[b].size();
    });
    return order;
}

Order OrderByComparison(icu::Collator const& collator, Names const& names) {
    Order order = Positions(names.size());
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        UErrorCode status = U_ZERO_ERROR;
        return collator.compare(icu::ConstChar16Ptr(names[a].data()),
                                static_cast<std::int32_t>(names[a].size()),
                                icu::ConstChar16Ptr(names[b].data()),
                                static_cast<std::int32_t>(names[b].size()), status) == UCOL_LESS;
    });
    return order;
}

void Library(benchmark::State& state) {
    auto const& names = NamesFor(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(OrderByLibrary(names));
    state.SetComplexityN(state.range(0));
}

void IcuKeysOnce(benchmark::State& state) {
    auto const& names = NamesFor(state);
    auto const collator = MakeCollator();
    for (auto _ : state)
        benchmark::DoNotOptimize(OrderByKeys(*collator, names));
    state.SetComplexityN(state.range(0));
}

void IcuComparison(benchmark::State& state) {
    auto const& names = NamesFor(state);
    auto const collator = MakeCollator();
    for (auto _ : state)
        benchmark::DoNotOptimize(OrderByComparison(*collator, names));
    state.SetComplexityN(state.range(0));
}

/// Whether the three agree, names that compare equal standing in any order among themselves.
bool OrdersAgree() {
    Names const names = MakeNames(20000);
    auto const collator = MakeCollator();
    Order const ours = OrderByLibrary(names);
    for (Order const& theirs : {OrderByKeys(*collator, names), OrderByComparison(*collator, names)})
        for (std::size_t i = 0; i < names.size(); ++i) {
            UErrorCode status = U_ZERO_ERROR;
            auto const& a = names[ours[i]];
            auto const& b = names[theirs[i]];
            if (collator->compare(icu::ConstChar16Ptr(a.data()),
                                  static_cast<std::int32_t>(a.size()),
                                  icu::ConstChar16Ptr(b.data()),
                                  static_cast<std::int32_t>(b.size()), status) != UCOL_EQUAL)
                return false;
        }
    return true;
}

#define SIZES                           \
    Arg(2)                              \
        ->Arg(1000)                     \
        ->Arg(10000)                    \
        ->Arg(100000)                   \
        ->Unit(benchmark::kMicrosecond) \
        ->Complexity(benchmark::oNLogN)
BENCHMARK(Library)->SIZES;
BENCHMARK(IcuKeysOnce)->SIZES;
BENCHMARK(IcuComparison)->SIZES;

}  // namespace

int main(int argc, char** argv) {
    if (!OrdersAgree()) {
        std::fputs("The orders differ: nothing to compare.\n", stderr);
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
