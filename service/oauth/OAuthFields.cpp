#include "service/oauth/OAuthFields.h"

#include "service/base/Text.h"
#include "service/http/UrlEncoding.h"

namespace quilloservice {

namespace {

constexpr std::size_t kLongestClient = 256;

}  // namespace

OAuthFields OAuthFields::InBody(http::Request const& request, std::string const& body) {
    std::string_view type = request.Header("Content-Type").value_or("");
    constexpr std::string_view form = "application/x-www-form-urlencoded";
    if (!http::EqualsIgnoringCase(type.substr(0, form.size()), form)) {
        throw OAuthError{"invalid_request", "The body has to be a form."};
    }
    return OAuthFields(http::ParseForm(body));
}

std::vector<std::string const*> OAuthFields::Values(std::string const& name) const {
    std::vector<std::string const*> values;
    for (auto const& [key, value] : fields) {
        if (key == name) values.push_back(&value);
    }
    return values;
}

std::string const& OAuthFields::Require(std::string const& name) const {
    auto values = Values(name);
    if (values.size() != 1 || values.front()->empty()) {
        throw OAuthError{"invalid_request", name + " has to be given once."};
    }
    return *values.front();
}

std::string const& OAuthFields::RequireClient() const {
    std::string const& client = Require("client_id");
    if (client.size() > kLongestClient || !IsPrintableText(client)) {
        throw OAuthError{"invalid_request",
                         "client_id has to be at most 256 bytes of printable text."};
    }
    return client;
}

std::optional<std::string> OAuthFields::Find(std::string const& name) const {
    auto values = Values(name);
    if (values.empty() || (values.size() == 1 && values.front()->empty())) return std::nullopt;
    return Require(name);
}

}  // namespace quilloservice
