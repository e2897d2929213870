#include "moxcore/string/NaturalOrder.h"

#include <unicode/char16ptr.h>
#include <unicode/coll.h>
#include <unicode/locid.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <new>
#include <numeric>
#include <span>
#include <stdexcept>
#include <string>

namespace moxcore::string::CaseInsensitive {
namespace {

std::unique_ptr<icu::Collator> MakeCollator() {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(
        icu::Collator::createInstance(icu::Locale::getRoot(), status));
    if (U_SUCCESS(status)) {
        // Accents count, letter case does not.
        collator->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status);
        collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        // The same letter may be spelled with a combining accent or without one.
        collator->setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, status);
    }
    if (U_FAILURE(status))
        throw std::runtime_error(std::string("ICU has no root collation: ") + u_errorName(status));
    return collator;
}

icu::Collator const& ThreadsCollator() {
    thread_local std::unique_ptr<icu::Collator> const collator = MakeCollator();
    return *collator;
}

/// The weight of each ASCII character in the keys of names that consist of nothing but printable
/// ASCII: a byte that orders as the collator has the characters, and is the same where it takes
/// them as equal. All digits share one, which announces a number.
class AsciiWeights {
public:
    static AsciiWeights const& Get() {
        static AsciiWeights const weights;
        return weights;
    }

    /// 0 for what is not printable, and beyond ASCII.
    std::uint8_t operator[](unsigned short unit) const {
        return unit < weights.size() ? weights[unit] : std::uint8_t{0};
    }

private:
    AsciiWeights() {
        auto const& collator = ThreadsCollator();
        auto const isBefore = [&collator](char16_t a, char16_t b) {
            UErrorCode status = U_ZERO_ERROR;
            return collator.compare(&a, 1, &b, 1, status) == UCOL_LESS;
        };
        std::array<char16_t, '~' - ' ' + 1> characters{};
        std::iota(characters.begin(), characters.end(), u' ');
        std::ranges::sort(characters, isBefore);
        std::uint8_t weight = 1;
        for (std::size_t i = 0; i < characters.size(); ++i) {
            if (i > 0 && isBefore(characters[i - 1], characters[i])) ++weight;
            weights[characters[i]] = weight;
        }
        std::fill(&weights['1'], &weights['9'] + 1, weights['0']);
    }

    std::array<std::uint8_t, 0x80> weights{};
};

bool IsDigit(unsigned short unit) {
    return unit >= '0' && unit <= '9';
}

constexpr std::size_t kChunkSize = sizeof(std::uint64_t);

/// The keys of many names, one after the other in one block of memory: keys that compare byte by
/// byte as the names do. A key ends in a zero byte and holds no other.
class KeyArena {
public:
    explicit KeyArena(std::vector<UTF16String const*> const& names) {
        std::size_t units = 0;
        for (auto const* name : names)
            units += name->size();
        Reallocate(kMostBytesPerUnit * units + names.size());
        offsets.reserve(names.size());
        if (!AppendAscii(names)) AppendCollated(names);
    }

    /// A chunk of a key, from the `depth`th byte on, as one number that orders as they do; zero
    /// bytes where the key has ended. There must be no zero byte before `depth`.
    std::uint64_t Chunk(std::uint32_t key, std::size_t depth) const {
        auto const* byte = bytes.get() + offsets[key] + depth;
        std::uint64_t chunk = 0;
        int shift = 64;
        while (shift > 0 && *byte != 0)
            chunk |= static_cast<std::uint64_t>(*byte++) << (shift -= 8);
        return chunk;
    }

private:
    /// A number's key is its weight, how many digits it has, and its digits.
    static constexpr std::size_t kMostBytesPerUnit = 3;
    /// The collator takes longer numbers apart.
    static constexpr std::ptrdiff_t kMostDigits = 254;

    /// False, with nothing done, when some name needs the collator, which takes several times as
    /// long.
    bool AppendAscii(std::vector<UTF16String const*> const& names) {
        auto const& weights = AsciiWeights::Get();
        auto* byte = bytes.get();
        for (auto const* name : names) {
            offsets.push_back(static_cast<std::size_t>(byte - bytes.get()));
            for (auto unit = name->begin(); unit != name->end();) {
                auto const weight = weights[*unit];
                auto const numberEnd = std::find_if_not(unit, name->end(), IsDigit);
                // Zeros in front do not count; a zero alone does.
                while (numberEnd - unit > 1 && *unit == '0')
                    ++unit;
                auto const digits = numberEnd - unit;
                if (weight == 0 || digits > kMostDigits) {
                    offsets.clear();
                    return false;
                }
                *byte++ = weight;
                if (digits == 0) {
                    ++unit;
                    continue;
                }
                *byte++ = static_cast<std::uint8_t>(digits);
                byte = std::copy(unit, numberEnd, byte);
                unit = numberEnd;
            }
            *byte++ = 0;
        }
        used = static_cast<std::size_t>(byte - bytes.get());
        return true;
    }

    void AppendCollated(std::vector<UTF16String const*> const& names) {
        auto const& collator = ThreadsCollator();
        for (auto const* name : names) {
            offsets.push_back(used);
            AppendCollated(collator, *name);
        }
    }

    void AppendCollated(icu::Collator const& collator, UTF16String const& name) {
        for (;;) {
            auto const room = std::min<std::size_t>(capacity - used, INT32_MAX);
            auto const length = static_cast<std::size_t>(collator.getSortKey(
                icu::ConstChar16Ptr(name.data()), static_cast<std::int32_t>(name.size()),
                bytes.get() + used, static_cast<std::int32_t>(room)));
            if (length == 0) throw std::bad_alloc();
            if (length <= room) {
                used += length;
                return;
            }
            Reallocate(std::max(used + length, capacity * 2));
        }
    }

    void Reallocate(std::size_t newCapacity) {
        auto grown = std::make_unique_for_overwrite<std::uint8_t[]>(newCapacity);
        std::copy_n(bytes.get(), used, grown.get());
        bytes = std::move(grown);
        capacity = newCapacity;
    }

    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t capacity = 0;
    std::size_t used = 0;
    std::vector<std::size_t> offsets;  // of each key, in `bytes`
};

struct Entry {
    std::uint64_t chunk;  // of the key, at the depth being sorted
    std::uint32_t index;  // of the name
};

/// Sorts entries whose keys are the same up to `depth`: by the next chunk alone, which costs one
/// comparison of numbers each time, and then those apart that have it in common.
void SortByChunks(std::span<Entry> entries, KeyArena const& keys, std::size_t depth) {
    auto const keyGoesOn = [](Entry const& entry) { return (entry.chunk & 0xFF) != 0; };
    auto const chunkDiffersFrom = [](Entry const& first) {
        return [&first](Entry const& entry) { return entry.chunk != first.chunk; };
    };

    // The common prefix is skipped in a loop, not by recursion: names may be long.
    for (;; depth += kChunkSize) {
        for (auto& entry : entries)
            entry.chunk = keys.Chunk(entry.index, depth);
        if (std::ranges::any_of(entries, chunkDiffersFrom(entries.front()))) break;
        if (!keyGoesOn(entries.front())) return;
    }
    std::ranges::sort(entries, {}, &Entry::chunk);
    for (auto first = entries.begin(); first != entries.end();) {
        auto const last = std::find_if(first, entries.end(), chunkDiffersFrom(*first));
        if (last - first > 1 && keyGoesOn(*first))
            SortByChunks({first, last}, keys, depth + kChunkSize);
        first = last;
    }
}

}  // namespace

bool NaturalStringLessThan(UTF16String const& a, UTF16String const& b) {
    UErrorCode status = U_ZERO_ERROR;
    return ThreadsCollator().compare(icu::ConstChar16Ptr(a.data()),
                                     static_cast<std::int32_t>(a.size()),
                                     icu::ConstChar16Ptr(b.data()),
                                     static_cast<std::int32_t>(b.size()), status) == UCOL_LESS;
}

std::vector<std::size_t> NaturalOrder(std::vector<UTF16String const*> const& names) {
    if (names.empty()) return {};
    if (names.size() == 1) return {0};
    if (names.size() == 2) {
        std::size_t const first = NaturalStringLessThan(*names[1], *names[0]) ? 1 : 0;
        return {first, 1 - first};
    }

    std::vector<Entry> entries(names.size());
    for (std::size_t index = 0; index < names.size(); ++index)
        entries[index].index = static_cast<std::uint32_t>(index);
    SortByChunks(entries, KeyArena(names), 0);

    std::vector<std::size_t> order(entries.size());
    std::transform(entries.begin(), entries.end(), order.begin(),
                   [](Entry const& entry) { return entry.index; });
    return order;
}

}  // namespace moxcore::string::CaseInsensitive
