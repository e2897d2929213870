#include "service/oauth/OAuthFields.h"

#include "service/http/UrlEncoding.h"

namespace quilloservice {

OAuthFields OAuthFields::InBody(http::Request const& request, std::string const& body) {
    std::string_view type = request.Header("Content-Type").value_or("");
    constexpr std::string_view kForm = "application/x-www-form-urlencoded";
    if (!http::EqualsIgnoringCase(type.substr(0, kForm.size()), kForm)) {
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

ClientId OAuthFields::RequireClient() const {
    std::optional<ClientId> client = ClientId::Parse(Require("client_id"));
    if (!client) {
        throw OAuthError{"invalid_request",
                         "client_id has to be at most 256 bytes of printable text."};
    }
    return *std::move(client);
}

std::optional<std::string> OAuthFields::Find(std::string const& name) const {
    auto values = Values(name);
    if (values.empty() || (values.size() == 1 && values.front()->empty())) return std::nullopt;
    return Require(name);
}

}  // namespace quilloservice
