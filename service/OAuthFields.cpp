#include "service/OAuthFields.h"

#include "service/Call.h"

namespace quilloservice {

OAuthFields OAuthFields::InBody(Call& call) {
    if (!call.Header("Content-Type")
             .value_or("")
             .starts_with("application/x-www-form-urlencoded")) {
        throw OAuthError{"invalid_request", "The body has to be a form."};
    }
    httplib::Params fields;
    httplib::detail::parse_query_text(call.ReadSmallBody(), fields);
    return OAuthFields(std::move(fields));
}

const std::string& OAuthFields::Require(const std::string& name) const {
    auto [first, last] = fields_.equal_range(name);
    if (first == last || first->second.empty() || std::next(first) != last) {
        throw OAuthError{"invalid_request", name + " has to be given once."};
    }
    return first->second;
}

std::optional<std::string> OAuthFields::Find(const std::string& name) const {
    auto [first, last] = fields_.equal_range(name);
    if (first == last || (first->second.empty() && std::next(first) == last)) return std::nullopt;
    return Require(name);
}

}  // namespace quilloservice
