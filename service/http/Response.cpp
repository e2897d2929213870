#include "service/http/Response.h"

#include <algorithm>
#include <boost/beast/http/status.hpp>
#include <ctime>
#include <utility>

namespace quilloservice::http {

namespace {

std::string_view ReasonOf(int status) {
    if (status == 460) return "Checksum Mismatch";
    auto reason =
        boost::beast::http::obsolete_reason(static_cast<boost::beast::http::status>(status));
    return {reason.data(), reason.size()};
}

/// Whether a response with this status has no content and no Content-Length (RFC 9110, 8.6).
bool IsWithoutContent(int status) {
    return status == 204 || status == 304;
}

void AddLine(std::string& head, std::string_view name, std::string_view value) {
    head += name;
    head += ": ";
    head += value;
    head += "\r\n";
}

}  // namespace

void Response::SetHeader(std::string_view name, std::string value) {
    // Values can contain text from clients, which must not end the line.
    std::erase_if(value, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
    RemoveHeader(name);
    headers.emplace_back(name, std::move(value));
}

void Response::AddToHeader(std::string_view name, std::string_view element) {
    for (auto& [itsName, value] : headers) {
        if (!EqualsIgnoringCase(itsName, name)) continue;
        value += ", ";
        value += element;
        return;
    }
    SetHeader(name, std::string(element));
}

void Response::RemoveHeader(std::string_view name) {
    std::erase_if(headers,
                  [&](auto const& header) { return EqualsIgnoringCase(header.first, name); });
}

bool Response::HasHeader(std::string_view name) const {
    return std::any_of(headers.begin(), headers.end(),
                       [&](auto const& header) { return EqualsIgnoringCase(header.first, name); });
}

void Response::SetBody(std::string text, std::string type) {
    body = std::move(text);
    SetHeader("Content-Type", std::move(type));
}

void Response::Redirect(int redirectStatus, std::string location) {
    status = redirectStatus;
    SetHeader("Location", std::move(location));
}

std::string Response::Head(std::string_view date, bool lastOnConnection) const {
    std::string head;
    head.reserve(512);
    head += "HTTP/1.1 " + std::to_string(status) + " ";
    head += ReasonOf(status);
    head += "\r\n";
    AddLine(head, "Date", date);
    for (auto const& [name, value] : headers)
        AddLine(head, name, value);
    if (!IsWithoutContent(status) && !takeOver) {
        std::int64_t length = content ? contentLength : static_cast<std::int64_t>(body.size());
        AddLine(head, "Content-Length", std::to_string(length));
    }
    if (lastOnConnection || takeOver) AddLine(head, "Connection", "close");
    head += "\r\n";
    return head;
}

std::string FormatDate(std::int64_t unixTime) {
    constexpr char const* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr char const* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::time_t time = unixTime;
    std::tm utc{};
    ::gmtime_r(&time, &utc);
    char numbers[32];
    std::snprintf(numbers, sizeof(numbers), " %04d %02d:%02d:%02d GMT", utc.tm_year + 1900,
                  utc.tm_hour, utc.tm_min, utc.tm_sec);
    std::string day = std::to_string(utc.tm_mday);
    return std::string(kDays[utc.tm_wday]) + ", " + (day.size() < 2 ? "0" : "") + day + " " +
           kMonths[utc.tm_mon] + numbers;
}

}  // namespace quilloservice::http
