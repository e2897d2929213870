#include "service/http/ByteRange.h"

#include <algorithm>

#include "service/base/Text.h"
#include "service/http/Request.h"

namespace quilloservice {

RangeRequest ParseRange(std::string_view header, std::int64_t size) {
    constexpr std::string_view kUnit = "bytes=";
    if (!http::EqualsIgnoringCase(header.substr(0, kUnit.size()), kUnit)) return {};
    header.remove_prefix(kUnit.size());
    std::size_t dash = header.find('-');
    if (dash == std::string_view::npos) return {};
    std::string_view firstText = header.substr(0, dash);
    std::string_view lastText = header.substr(dash + 1);
    auto first = ParseNumber(firstText);
    auto last = ParseNumber(lastText);
    if (firstText.empty()) {
        if (!last) return {};
        std::int64_t length = std::min(*last, size);
        if (length == 0) return {std::nullopt, true};
        return {ByteRange{size - length, length}};
    }
    if (!first || (!last && !lastText.empty()) || (last && *last < *first)) return {};
    if (*first >= size) return {std::nullopt, true};
    std::int64_t end = last ? std::min(*last, size - 1) : size - 1;
    return {ByteRange{*first, end - *first + 1}};
}

}  // namespace quilloservice
