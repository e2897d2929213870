#include "moxcore/utility/Guid.h"

#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <ostream>
#include <system_error>
#include <utility>

namespace moxcore::utility {
namespace {

constexpr std::string_view kForm = "00000000-0000-0000-0000-000000000000";
constexpr std::string_view kDigits = "0123456789abcdef";

/// Where the two digits of each byte stand. A tree of locations has hundreds of thousands of Guids
/// read and written, so neither searches the form for them.
constexpr std::array<std::uint8_t, 16> kPlaces = {0,  2,  4,  6,  9,  11, 14, 16,
                                                  19, 21, 24, 26, 28, 30, 32, 34};

/// Calls `each` with the number of every byte and the place of its digits, which are constants.
template <class Each>
constexpr void ForEachByte(Each each) {
    [&]<std::size_t... byte>(std::index_sequence<byte...>) {
        (each(byte, std::size_t{kPlaces[byte]}), ...);
    }
    (std::make_index_sequence<kPlaces.size()>());
}

constexpr std::uint8_t kNoDigit = 0xFF;

/// The value of each character as a hexadecimal digit.
constexpr std::array<std::uint8_t, 256> kDigitValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoDigit);
    for (std::uint8_t value = 0; value < 16; ++value) {
        auto const digit = static_cast<unsigned char>(kDigits[value]);
        values[digit] = value;
        if (value >= 10) values[digit - 'a' + 'A'] = value;
    }
    return values;
}();

}  // namespace

Guid::Guid(std::string_view text) noexcept {
    if (text.size() != kForm.size()) return;
    for (std::size_t const hyphen : {8, 13, 18, 23})
        if (text[hyphen] != '-') return;
    std::array<std::uint8_t, 16> parsed{};
    unsigned seen = 0;  // all digits' bits; more than four of them when one was none
    ForEachByte([&](std::size_t byte, std::size_t place) {
        unsigned const high = kDigitValues[static_cast<unsigned char>(text[place])];
        unsigned const low = kDigitValues[static_cast<unsigned char>(text[place + 1])];
        seen |= high | low;
        parsed[byte] = static_cast<std::uint8_t>(high << 4 | low);
    });
    if (seen <= 0xF) bytes = parsed;
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
    ForEachByte([&](std::size_t byte, std::size_t place) {
        text[place] = kDigits[bytes[byte] >> 4];
        text[place + 1] = kDigits[bytes[byte] & 0x0F];
    });
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
