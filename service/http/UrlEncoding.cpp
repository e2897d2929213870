#include "service/http/UrlEncoding.h"

#include <algorithm>

namespace quilloservice::http {

namespace {

int DigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/// Decodes the percent-encoding at the front of `text`; -1 if there is none.
int EncodedByte(std::string_view text) {
    if (text.size() < 3 || text[0] != '%') return -1;
    int high = DigitValue(text[1]);
    int low = DigitValue(text[2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

std::string DecodeField(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    while (!text.empty()) {
        int byte = EncodedByte(text);
        decoded += byte >= 0 ? static_cast<char>(byte) : text[0] == '+' ? ' ' : text[0];
        text.remove_prefix(byte >= 0 ? 3 : 1);
    }
    return decoded;
}

}  // namespace

std::optional<std::string> PercentDecode(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    while (!text.empty()) {
        int byte = EncodedByte(text);
        if (byte < 0 && text[0] == '%') return std::nullopt;
        decoded += byte >= 0 ? static_cast<char>(byte) : text[0];
        text.remove_prefix(byte >= 0 ? 3 : 1);
    }
    return decoded;
}

Fields ParseForm(std::string_view text) {
    Fields fields;
    while (!text.empty()) {
        std::string_view field = text.substr(0, text.find('&'));
        text.remove_prefix(std::min(field.size() + 1, text.size()));
        if (field.empty()) continue;
        std::size_t equals = std::min(field.find('='), field.size());
        fields.emplace_back(DecodeField(field.substr(0, equals)),
                            DecodeField(field.substr(std::min(equals + 1, field.size()))));
    }
    return fields;
}

}  // namespace quilloservice::http
