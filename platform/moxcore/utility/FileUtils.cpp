#include "moxcore/utility/FileUtils.h"

#include <algorithm>
#include <string_view>

namespace moxcore::utility::FileUtils {

string::UTF16String ReplaceIllegalFileNameCharacters(string::UTF16String const& name,
                                                     unsigned short replacement) {
    auto const isIllegal = [](unsigned short unit) {
        constexpr std::u16string_view kIllegal = u"/\\:*?\"<>|\u007F";
        return unit < 0x20 || kIllegal.find(static_cast<char16_t>(unit)) != kIllegal.npos;
    };
    auto legal = name;
    std::replace_if(legal.begin(), legal.end(), isIllegal, replacement);
    return legal;
}

}  // namespace moxcore::utility::FileUtils
