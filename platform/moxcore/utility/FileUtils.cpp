#include "moxcore/utility/FileUtils.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace moxcore::utility::FileUtils {
namespace {

constexpr std::size_t kLongestName = 251;  // bytes of UTF-8

/// The beginning of `name` that takes at most `bytes` bytes of UTF-8.
string::UTF16String Shorten(string::UTF16String const& name, std::size_t bytes) {
    std::size_t end = 0;
    while (end < name.size()) {
        bool const isPair = (name[end] & 0xFC00) == 0xD800 && end + 1 < name.size() &&
                            (name[end + 1] & 0xFC00) == 0xDC00;
        std::size_t const size = isPair ? 4 : name[end] < 0x80 ? 1 : name[end] < 0x800 ? 2 : 3;
        if (size > bytes) break;
        bytes -= size;
        end += isPair ? 2 : 1;
    }
    return name.substr(0, end);
}

}  // namespace

string::UTF16String ReplaceIllegalFileNameCharacters(string::UTF16String const& name,
                                                     unsigned short replacement) {
    auto const isIllegal = [](unsigned short unit) {
        constexpr std::u16string_view kIllegal = u"/\\:*?\"<>|\u007F";
        return unit < 0x20 || kIllegal.find(static_cast<char16_t>(unit)) != kIllegal.npos;
    };
    auto legal = name;
    std::replace_if(legal.begin(), legal.end(), isIllegal, replacement);
    return Shorten(legal, kLongestName);
}

}  // namespace moxcore::utility::FileUtils
