#include "quillosdk/AnswerHead.h"

#include <algorithm>

namespace quillosdk {

std::string UpperCase(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return upper;
}

void AnswerHead::ReadLine(std::string_view line) {
    line = line.substr(0, line.find_last_not_of(" \t\r\n") + 1);
    if (line.starts_with("HTTP/")) {
        fields.clear();
        isComplete = false;
        return;
    }
    if (line.empty()) isComplete = true;
    auto const colon = line.find(':');
    if (isComplete || colon == std::string_view::npos) return;
    auto value = line.substr(colon + 1);
    value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
    auto const [place, isNew] = fields.try_emplace(UpperCase(line.substr(0, colon)), value);
    if (!isNew) place->second.append(", ").append(value);
}

}  // namespace quillosdk
