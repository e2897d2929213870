// Texts of the service's, on their way to a person: converted, cleaned and shortened.

#include <algorithm>
#include <string>

#include "moxcore/string/Conversions.h"
#include "quillosdk/FailureText.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using moxcore::string::UTF16to8;
    using moxcore::string::UTF8to16;
    std::string const text(fuzz::AsText(data, size));

    auto const units = UTF8to16(text);
    auto const valid = UTF16to8(units);
    FUZZ_REQUIRE(fuzz::IsUtf8(valid));
    FUZZ_REQUIRE(UTF8to16(valid) == units);
    if (fuzz::IsUtf8(text)) FUZZ_REQUIRE(valid == text);

    // Any two bytes are a unit of some text, a lone half of a pair among them.
    moxcore::string::UTF16String any;
    for (std::size_t i = 0; i + 1 < size; i += 2)
        any += static_cast<unsigned short>(data[i] << 8 | data[i + 1]);
    FUZZ_REQUIRE(fuzz::IsUtf8(UTF16to8(any)));

    auto const shortened = moxcore::string::Shorten(units, 20);
    auto const isSecondHalf = [](auto unit) { return (unit & 0xFC00) == 0xDC00; };
    auto const characters =
        shortened.size() -
        static_cast<std::size_t>(std::count_if(shortened.begin(), shortened.end(), isSecondHalf));
    FUZZ_REQUIRE(characters <= 20);
    FUZZ_REQUIRE(UTF8to16(UTF16to8(shortened)) == shortened);  // no half of a character is left
    if (shortened != units)
        FUZZ_REQUIRE(units.starts_with(shortened.substr(0, shortened.size() - 1)));
    static_cast<void>(moxcore::string::Shorten(any, 20));

    auto const shown = quillosdk::Sanitise(text);
    FUZZ_REQUIRE(fuzz::IsUtf8(shown));
    FUZZ_REQUIRE(UTF8to16(shown).size() <= 200);
    for (auto const unit : UTF8to16(shown))
        FUZZ_REQUIRE(unit >= 0x20 && (unit < 0x7F || unit > 0x9F) && unit != 0x2028 &&
                     unit != 0x2029);
    FUZZ_REQUIRE(quillosdk::Sanitise(shown) == shown);
    return 0;
}
