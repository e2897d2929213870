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

/// The value of a hexadecimal digit, or -1.
constexpr int DigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

Guid::Guid(std::string_view text) noexcept {
    if (text.size() != kForm.size()) return;
    std::array<std::uint8_t, 16> parsed{};
    std::size_t digits = 0;
    for (std::size_t i = 0; i < kForm.size(); ++i) {
        if (kForm[i] == '-') {
            if (text[i] != '-') return;
            continue;
        }
        int const value = DigitValue(text[i]);
        if (value < 0) return;
        auto& byte = parsed[digits++ / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | value);
    }
    bytes = parsed;
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

std::string Guid::AsStdString() const {
    std::string text(kForm);
    std::size_t digits = 0;
    for (char& c : text) {
        if (c == '-') continue;
        auto const byte = bytes[digits / 2];
        c = kDigits[digits % 2 == 0 ? byte >> 4 : byte & 0x0F];
        ++digits;
    }
    return text;
}

std::ostream& operator<<(std::ostream& out, Guid const& guid) {
    return out << guid.AsStdString();
}

}  // namespace moxcore::utility
