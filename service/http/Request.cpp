#include "service/http/Request.h"

#include <algorithm>

#include "service/base/ApiError.h"
#include "service/base/Text.h"

namespace quilloservice::http {

namespace {

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

bool EqualsIgnoringCase(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char a, char b) { return Lower(a) == Lower(b); });
}

std::vector<std::string_view> ListElements(std::string_view list) {
    std::vector<std::string_view> elements;
    bool quoted = false;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= list.size(); ++i) {
        if (i < list.size() && list[i] == '"') quoted = !quoted;
        if (i < list.size() && (quoted || list[i] != ',')) continue;
        std::string_view element = Trim(list.substr(begin, i - begin));
        if (!element.empty()) elements.push_back(element);
        begin = i + 1;
    }
    return elements;
}

std::optional<std::string_view> Request::Header(std::string_view name) const {
    std::optional<std::string_view> found;
    for (auto const& [key, value] : headers) {
        if (!EqualsIgnoringCase(key, name)) continue;
        if (found) {
            throw ApiError::BadRequest("The header " + std::string(name) + " is there twice.");
        }
        found = value;
    }
    return found;
}

std::optional<std::string> Request::ListHeader(std::string_view name) const {
    std::optional<std::string> found;
    for (auto const& [key, value] : headers) {
        if (EqualsIgnoringCase(key, name)) found = found ? *found + "," + value : value;
    }
    return found;
}

std::string Request::Parameter(std::string_view name) const {
    for (auto const& [key, value] : parameters) {
        if (key == name) return value;
    }
    return {};
}

bool Request::HasParameter(std::string_view name) const {
    return std::any_of(parameters.begin(), parameters.end(),
                       [&](auto const& parameter) { return parameter.first == name; });
}

}  // namespace quilloservice::http
