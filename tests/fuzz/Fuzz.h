#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// Ends the program where `condition` does not hold, in every build: that is a find.
#define FUZZ_REQUIRE(condition)                                                                 \
    do {                                                                                        \
        if (!(condition)) {                                                                     \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                       \
        }                                                                                       \
    } while (false)

/// What the fuzzer and the replay call with each input. Each target defines it.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace fuzz {

inline std::string_view AsText(std::uint8_t const* data, std::size_t size) {
    return {reinterpret_cast<char const*>(data), size};
}

/// Takes the first line off `input`, without its end.
inline std::string_view TakeLine(std::string_view& input) {
    auto const end = input.find('\n');
    auto const line = input.substr(0, end);
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    return line;
}

/// Whether `text` is well-formed UTF-8 (Unicode, table 3-7), as a table has it: the product goes by
/// arithmetic.
inline bool IsUtf8(std::string_view text) {
    struct Form {
        unsigned char leadFrom, leadTo, secondFrom, secondTo;
        std::size_t length;
    };
    static constexpr Form kForms[] = {
        {0x00, 0x7F, 0, 0, 1},       {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
        {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
        {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};
    while (!text.empty()) {
        auto const byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
        Form const* form = nullptr;
        for (auto const& each : kForms)
            if (byte(0) >= each.leadFrom && byte(0) <= each.leadTo) form = &each;
        if (!form || text.size() < form->length) return false;
        if (form->length > 1 && (byte(1) < form->secondFrom || byte(1) > form->secondTo))
            return false;
        for (std::size_t i = 2; i < form->length; ++i)
            if (byte(i) < 0x80 || byte(i) > 0xBF) return false;
        text.remove_prefix(form->length);
    }
    return true;
}

}  // namespace fuzz
