#include "moxcore/string/NaturalOrder.h"

#include <unicode/char16ptr.h>
#include <unicode/coll.h>
#include <unicode/locid.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
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

/// The collation keys of many names, one after the other in one block of memory.
class KeyArena {
public:
    explicit KeyArena(std::size_t capacity)
        : bytes(std::make_unique_for_overwrite<std::uint8_t[]>(capacity)), capacity(capacity) {}

    /// Appends the key of `name` and returns its length, the final zero byte included.
    std::size_t Append(icu::Collator const& collator, UTF16String const& name) {
        for (;;) {
            auto const room = std::min<std::size_t>(capacity - used, INT32_MAX);
            auto const length = static_cast<std::size_t>(collator.getSortKey(
                icu::ConstChar16Ptr(name.data()), static_cast<std::int32_t>(name.size()),
                bytes.get() + used, static_cast<std::int32_t>(room)));
            if (length <= room) {
                used += length;
                return length;
            }
            Grow(used + length);
        }
    }

    std::uint8_t const* Data() const { return bytes.get(); }

private:
    void Grow(std::size_t needed) {
        auto const larger = std::max(needed, capacity * 2);
        auto grown = std::make_unique_for_overwrite<std::uint8_t[]>(larger);
        std::memcpy(grown.get(), bytes.get(), used);
        bytes = std::move(grown);
        capacity = larger;
    }

    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t capacity;
    std::size_t used = 0;
};

struct Entry {
    std::uint64_t head = 0;  // the key's first bytes past what all keys share, as one number
    std::size_t offset = 0;  // of the rest, in the arena
    std::uint32_t length = 0;
    std::uint32_t index = 0;  // of the name
};

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

    std::size_t units = 0;
    for (auto const* name : names)
        units += name->size();
    KeyArena arena(2 * units + 8 * names.size());
    auto const& collator = ThreadsCollator();
    std::vector<Entry> entries(names.size());
    std::size_t offset = 0;
    for (std::size_t index = 0; index < names.size(); ++index) {
        auto const length = arena.Append(collator, *names[index]);
        entries[index] = {0, offset, static_cast<std::uint32_t>(length),
                          static_cast<std::uint32_t>(index)};
        offset += length;
    }

    auto const* keys = arena.Data();
    for (auto& entry : entries) {
        auto const* key = keys + entry.offset;
        for (unsigned i = 0; i < 8; ++i)
            entry.head = entry.head << 8 | (i < entry.length ? key[i] : 0);
    }
    std::sort(entries.begin(), entries.end(), [keys](Entry const& a, Entry const& b) {
        if (a.head != b.head) return a.head < b.head;
        int const order =
            std::memcmp(keys + a.offset, keys + b.offset, std::min(a.length, b.length));
        return order != 0 ? order < 0 : a.length < b.length;
    });

    std::vector<std::size_t> order(entries.size());
    std::transform(entries.begin(), entries.end(), order.begin(),
                   [](Entry const& entry) { return entry.index; });
    return order;
}

}  // namespace moxcore::string::CaseInsensitive
