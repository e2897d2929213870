#include "service/Call.h"

#include <httplib.h>

#include <nlohmann/json.hpp>

#include "service/ApiError.h"
#include "service/Connection.h"
#include "service/HttpServer.h"
#include "service/Text.h"
#include "service/Uuid.h"

namespace quilloservice {

using nlohmann::json;

namespace {

constexpr std::size_t kSmallBody = 64 * 1024;
constexpr std::size_t kLongestName = 1024;

}  // namespace

std::optional<std::string> Call::Header(const std::string& name) const {
    auto count = request.get_header_value_count(name);
    if (count == 0) return std::nullopt;
    if (count > 1) throw ApiError::BadRequest("The header " + name + " is there twice.");
    return request.get_header_value(name);
}

std::optional<std::int64_t> Call::NumberHeader(const std::string& name) const {
    auto text = Header(name);
    if (!text) return std::nullopt;
    auto number = ParseNumber(*text);
    if (!number) {
        throw ApiError::BadRequest("The header " + name + " has to be a whole number from 0 up.");
    }
    return number;
}

std::optional<std::string> Call::UuidHeader(const std::string& name) const {
    auto text = Header(name);
    if (text && !IsUuid(*text)) {
        throw ApiError::BadRequest("The header " + name + " has to be a lower-case UUID.");
    }
    return text;
}

bool Call::ReadBody(const std::function<bool(std::string_view)>& take) {
    bodyTouched_ = true;
    if (reader_ == nullptr) return true;
    bodyRead_ = (*reader_)([&](const char* data, std::size_t size) { return take({data, size}); });
    return bodyRead_;
}

std::string Call::ReadSmallBody() {
    std::string body;
    bool complete = ReadBody([&](std::string_view bytes) {
        if (body.size() + bytes.size() > kSmallBody) {
            throw ApiError::TooLarge("The body is larger than 64 KiB.");
        }
        body += bytes;
        return true;
    });
    if (!complete) throw ApiError::BadRequest("The body ended early.");
    return body;
}

json Call::ReadJson() {
    json body = json::parse(ReadSmallBody(), nullptr, /*allow_exceptions=*/false);
    if (!body.is_object()) throw ApiError::BadRequest("The body has to be a JSON object.");
    return body;
}

std::string Call::ReadName() {
    json body = ReadJson();
    auto name = body.find("name");
    if (name == body.end() || !name->is_string()) {
        throw ApiError::BadRequest("\"name\" is missing or no string.");
    }
    auto text = name->get<std::string>();
    if (text.empty() || text.size() > kLongestName || !IsShowableText(text)) {
        throw ApiError::BadRequest("\"name\" has to be 1 to 1,024 bytes without NUL.");
    }
    return text;
}

void Call::Answer(int status, const json& body) {
    response.status = status;
    response.set_content(body.dump(-1, ' ', false, json::error_handler_t::replace),
                         "application/json");
}

void Call::AnswerPage(int status, const std::string& html, const std::string& policy) {
    response.status = status;
    response.set_header("Content-Security-Policy", policy);
    response.set_header("Referrer-Policy", "no-referrer");
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_content(html, "text/html; charset=utf-8");
}

void Call::AnswerError(int status, std::string_view code, std::string_view message) {
    Answer(status, {{"error", {{"code", code}, {"message", message}}}});
}

void Call::Settle() {
    if (bodyRead_) return;
    bool announced = request.has_header("Transfer-Encoding") ||
                     request.get_header_value("Content-Length") != "0";
    if (!announced) return;
    auto length = ParseNumber(request.get_header_value("Content-Length"));
    bool small = length && *length <= static_cast<std::int64_t>(kSmallBody);
    if (reader_ != nullptr && !bodyTouched_ && small) {
        if (ReadBody([](std::string_view) { return true; })) return;
    }
    response.set_header("Connection", "close");
    HttpServer::ThisConnection().CloseAfterAnswer();
}

}  // namespace quilloservice
