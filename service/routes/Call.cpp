#include "service/routes/Call.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

#include "service/base/ApiError.h"
#include "service/base/Text.h"
#include "service/pages/ErrorPage.h"

namespace quilloservice {

using nlohmann::json;

namespace {

constexpr std::size_t kLongestName = 1024;

bool IsAllDigits(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

std::optional<std::string> Call::Header(std::string_view name) const {
    auto value = request.Header(name);
    return value ? std::optional(std::string(*value)) : std::nullopt;
}

std::optional<std::int64_t> Call::NumberHeader(std::string_view name) const {
    auto text = request.Header(name);
    if (!text) return std::nullopt;
    if (!IsAllDigits(*text)) {
        throw ApiError::BadRequest("The header " + std::string(name) +
                                   " has to be a whole number from 0 up.");
    }
    return ParseNumber(*text).value_or(std::numeric_limits<std::int64_t>::max());
}

std::optional<IdempotencyKey> Call::GetIdempotencyKey() const {
    auto text = request.Header("Idempotency-Key");
    if (!text) return std::nullopt;
    auto key = IdempotencyKey::Parse(*text);
    if (!key) throw ApiError::BadRequest("The header Idempotency-Key has to be a lower-case UUID.");
    return key;
}

std::string Call::GetBearerToken() const {
    constexpr std::string_view kScheme = "Bearer";
    std::string_view header = request.Header("Authorization").value_or("");
    std::size_t blank = std::min(header.find(' '), header.size());
    if (!http::EqualsIgnoringCase(header.substr(0, blank), kScheme)) return {};
    std::size_t token = header.find_first_not_of(' ', blank);
    return token == std::string_view::npos ? std::string() : std::string(header.substr(token));
}

std::string Call::GetOwnAddress() const {
    if (!ownAddress.empty()) return std::string(ownAddress);
    return request.host.empty() ? std::string() : "http://" + request.host;
}

json Call::ReadJson() const {
    json object = json::parse(GetBody(), nullptr, /*allow_exceptions=*/false);
    if (!object.is_object()) throw ApiError::BadRequest("The body has to be a JSON object.");
    return object;
}

std::string Call::ReadName() const {
    json object = ReadJson();
    auto name = object.find("name");
    if (name == object.end() || !name->is_string()) {
        throw ApiError::BadRequest("\"name\" is missing or no string.");
    }
    auto text = name->get<std::string>();
    if (text.empty() || text.size() > kLongestName || !IsShowableText(text)) {
        throw ApiError::BadRequest("\"name\" has to be 1 to 1,024 bytes without NUL.");
    }
    return text;
}

void Call::Respond(int status, json const& body) {
    response.status = status;
    response.SetBody(body.dump(-1, ' ', false, json::error_handler_t::replace), "application/json");
}

void Call::RespondWithPage(int status, std::string const& html, std::string const& policy) {
    response.status = status;
    response.SetHeader("Content-Security-Policy", policy);
    response.SetHeader("Referrer-Policy", "no-referrer");
    response.SetHeader("X-Content-Type-Options", "nosniff");
    response.SetBody(html, "text/html; charset=utf-8");
}

void Call::RespondWithError(int status, std::string_view code, std::string_view message) {
    // These headers describe the resource, not the error.
    for (char const* header :
         {"ETag", "Cache-Control", "Last-Modified", "Accept-Ranges", "Content-Disposition"}) {
        response.RemoveHeader(header);
    }
    response.content.reset();
    if (errorpage::IsOffered(request.path)) {
        response.AddToHeader("Vary", "Accept");
        if (errorpage::IsWanted(request.ListHeader("Accept").value_or(""))) {
            return RespondWithPage(status, errorpage::Render(status, message),
                                   errorpage::SecurityPolicy());
        }
    }
    Respond(status, {{"error", {{"code", code}, {"message", message}}}});
}

}  // namespace quilloservice
