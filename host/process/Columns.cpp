#include "host/process/Columns.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstdint>

namespace quillohost {
namespace {

int ColumnsOf(UChar32 character) {
    auto const category = u_charType(character);
    if (category == U_NON_SPACING_MARK || category == U_ENCLOSING_MARK || category == U_FORMAT_CHAR)
        return 0;
    auto const width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

/// The bytes and columns of the beginning of `text` that takes at most `width` columns.
struct Beginning {
    Beginning(std::string_view text, int width) {
        auto const size = static_cast<std::int32_t>(text.size());
        while (bytes < size) {
            auto end = bytes;
            UChar32 character = 0;
            U8_NEXT_OR_FFFD(text.data(), end, size, character);
            int const taken = ColumnsOf(character);
            if (taken > width - columns) return;
            columns += taken;
            bytes = end;
        }
    }
    std::int32_t bytes = 0;
    int columns = 0;
};

}  // namespace

int CountColumns(std::string_view text) {
    return Beginning(text, static_cast<int>(2 * text.size())).columns;
}

std::string FirstColumns(std::string_view text, int width) {
    return std::string(text.substr(0, static_cast<std::size_t>(Beginning(text, width).bytes)));
}

}  // namespace quillohost
