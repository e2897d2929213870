#include "moxcore/utility/Guid.h"

#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <ostream>
#include <system_error>

namespace moxcore::utility {
namespace {

constexpr std::string_view kForm = "00000000-0000-0000-0000-000000000000";
constexpr std::string_view kDigits = "0123456789abcdef";

/// Where the two digits of each byte stand.
constexpr std::array<std::uint8_t, 16> kPlaces = {0,  2,  4,  6,  9,  11, 14, 16,
                                                  19, 21, 24, 26, 28, 30, 32, 34};

/// Eight characters in a number, the first one lowest.
std::uint64_t Load(char const* first, char const* second) {
    std::uint64_t characters = 0;
    for (int i = 0; i < 4; ++i) {
        characters |= std::uint64_t{static_cast<unsigned char>(first[i])} << 8 * i;
        characters |= std::uint64_t{static_cast<unsigned char>(second[i])} << (32 + 8 * i);
    }
    return characters;
}

/// `byte` in each of eight bytes.
constexpr std::uint64_t Each(std::uint8_t byte) {
    return byte * std::uint64_t{0x0101010101010101};
}

/// Whether all of the characters are hexadecimal digits. Adding a number to a character, which is
/// below 0x80, carries into its highest bit when it is so large at least.
bool AreDigits(std::uint64_t characters) {
    std::uint64_t const lower = characters | Each(0x20);
    auto const atLeast = [](std::uint64_t of, char least) {
        return of + Each(static_cast<std::uint8_t>(0x80 - least));
    };
    std::uint64_t const decimal = atLeast(characters, '0') & ~atLeast(characters, '9' + 1);
    std::uint64_t const letter = atLeast(lower, 'a') & ~atLeast(lower, 'f' + 1);
    return ((characters | ~(decimal | letter)) & Each(0x80)) == 0;
}

/// The four bytes that eight digits stand for, the first one lowest. A tree of locations has
/// hundreds of thousands of Guids read, so all are made at once.
std::uint32_t BytesOf(std::uint64_t digits) {
    std::uint64_t const values = (digits & Each(0x0F)) + 9 * (digits >> 6 & Each(1));
    std::uint64_t bytes = (values << 4 | values >> 8) & 0x00FF00FF00FF00FF;
    bytes = (bytes | bytes >> 8) & 0x0000FFFF0000FFFF;
    return static_cast<std::uint32_t>(bytes | bytes >> 16);
}

}  // namespace

Guid::Guid(std::string_view text) noexcept {
    if (text.size() != kForm.size()) return;
    for (std::size_t const hyphen : {8, 13, 18, 23})
        if (text[hyphen] != '-') return;
    char const* const c = text.data();
    std::array<std::uint64_t, 4> const digits = {Load(c, c + 4), Load(c + 9, c + 14),
                                                 Load(c + 19, c + 24), Load(c + 28, c + 32)};
    if (!std::ranges::all_of(digits, AreDigits)) return;
    for (std::size_t byte = 0; byte < bytes.size(); ++byte)
        bytes[byte] = static_cast<std::uint8_t>(BytesOf(digits[byte / 4]) >> 8 * (byte % 4));
}

Guid Guid::CreateUnique() {
    Guid guid;
    // So few bytes come whole or not at all.
    while (getrandom(guid.bytes.data(), guid.bytes.size(), 0) < 0) {
        if (errno != EINTR)
            throw std::system_error(errno, std::generic_category(), "no random bytes for a Guid");
    }
    guid.bytes[6] = static_cast<std::uint8_t>((guid.bytes[6] & 0x0F) | 0x40);  // version 4
    guid.bytes[8] = static_cast<std::uint8_t>((guid.bytes[8] & 0x3F) | 0x80);  // RFC 4122's variant
    return guid;
}

Guid::Text Guid::AsText() const noexcept {
    Text text{};
    std::copy(kForm.begin(), kForm.end(), text.begin());
    for (std::size_t byte = 0; byte < bytes.size(); ++byte) {
        text[kPlaces[byte]] = kDigits[bytes[byte] >> 4];
        text[kPlaces[byte] + std::size_t{1}] = kDigits[bytes[byte] & 0x0F];
    }
    return text;
}

std::string Guid::AsStdString() const {
    auto const text = AsText();
    return {text.begin(), text.end()};
}

std::ostream& operator<<(std::ostream& out, Guid const& guid) {
    return out << guid.AsStdString();
}

}  // namespace moxcore::utility
