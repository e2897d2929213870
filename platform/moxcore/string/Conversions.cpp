#include "moxcore/string/Conversions.h"

#include <unicode/brkiter.h>
#include <unicode/char16ptr.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>

namespace moxcore::string {
namespace {

constexpr UChar32 kReplacement = 0xFFFD;
constexpr unsigned short kEllipsis = 0x2026;

bool IsAscii(std::string_view text) {
    unsigned char seen = 0;
    for (char const c : text)
        seen |= static_cast<unsigned char>(c);
    return seen < 0x80;
}

bool IsAscii(UTF16String const& text) {
    unsigned short seen = 0;
    for (unsigned short const unit : text)
        seen |= unit;
    return seen < 0x80;
}

/// ICU counts in 32 bits, and takes a negative length for a terminated string.
std::int32_t LengthForIcu(std::size_t length) {
    if (length > std::numeric_limits<std::int32_t>::max())
        throw std::length_error("text of 2 GiB or more cannot be converted");
    return static_cast<std::int32_t>(length);
}

}  // namespace

UTF16String AsciiToUTF16(std::string_view ascii) {
    UTF16String text(ascii.size(), 0);
    std::transform(ascii.begin(), ascii.end(), text.begin(), [](char c) {
        auto const byte = static_cast<unsigned char>(c);
        return static_cast<unsigned short>(byte < 0x80 ? byte : kReplacement);
    });
    return text;
}

UTF16String UTF8to16(std::string_view utf8) {
    if (IsAscii(utf8)) return UTF16String(utf8.begin(), utf8.end());

    auto const length = LengthForIcu(utf8.size());
    UTF16String text(utf8.size(), 0);  // no character has more units than bytes
    std::int32_t units = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(icu::Char16Ptr(text.data()), length, &units, utf8.data(), length,
                         kReplacement, nullptr, &status);
    text.resize(static_cast<std::size_t>(units));
    return text;
}

std::string UTF16to8(UTF16String const& text) {
    if (IsAscii(text)) return std::string(text.begin(), text.end());

    auto const length = LengthForIcu(text.size());
    icu::ConstChar16Ptr const units(text.data());
    std::int32_t needed = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8WithSub(nullptr, 0, &needed, units, length, kReplacement, nullptr, &status);
    std::string utf8(static_cast<std::size_t>(needed), '\0');
    status = U_ZERO_ERROR;
    u_strToUTF8WithSub(utf8.data(), needed, nullptr, units, length, kReplacement, nullptr, &status);
    return utf8;
}

UTF16String Shorten(UTF16String text, std::size_t most) {
    // Without ICU's look at it: no character has less than one unit.
    if (text.size() <= most || most == 0) return text;
    auto const* const units = reinterpret_cast<UChar const*>(text.data());
    auto const length = LengthForIcu(text.size());
    if (!u_strHasMoreChar32Than(units, length, LengthForIcu(most))) return text;

    std::int32_t end = 0;
    U16_FWD_N(units, end, length, LengthForIcu(most - 1));
    // One more than is kept: whether a character ends there depends on what comes next.
    std::int32_t next = end;
    U16_FWD_1(units, next, length);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> const characters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_SUCCESS(status)) {
        characters->setText(icu::UnicodeString(false, units, next));
        // A "character" of which nothing would be left is cut in two.
        if (!characters->isBoundary(end))
            if (auto const before = characters->preceding(end); before > 0) end = before;
    }
    text.resize(static_cast<std::size_t>(end));
    text.push_back(kEllipsis);
    return text;
}

}  // namespace moxcore::string
