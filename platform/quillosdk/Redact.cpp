#include "quillosdk/Redact.h"

#include <algorithm>
#include <charconv>
#include <vector>

namespace quillosdk {
namespace {

/// So few characters of a token do not help anybody; as many more of them do.
constexpr std::size_t kShortestRun = 8;

/// An encoding in an encoding, and so on: no service repeats what it was sent deeper than that.
constexpr int kMostEncodings = 4;

constexpr std::size_t kLongestError = std::size_t{16} * 1024;

/// A character of a text, and the bytes of the text that stand for it.
struct Unit {
    char value;
    std::size_t begin;
    std::size_t end;
};
using Units = std::vector<Unit>;

/// How many units the escape at `at` takes, and what it stands for; one unit when there is none.
std::size_t ReadEscape(Units const& units, std::size_t at, char& value) {
    auto const readHex = [&](std::size_t from, std::size_t digits) {
        char text[4];
        if (from + digits > units.size()) return false;
        for (std::size_t i = 0; i < digits; ++i)
            text[i] = units[from + i].value;
        unsigned number = 0;
        if (std::from_chars(text, text + digits, number, 16).ptr != text + digits) return false;
        value = number < 0x80 ? static_cast<char>(number) : '\0';  // no secret holds others
        return true;
    };
    value = units[at].value;
    if (value == '%' && readHex(at + 1, 2)) return 3;
    if (value == '+') value = ' ';
    if (value != '\\' || at + 1 == units.size()) return 1;
    value = units[at + 1].value;
    return value == 'u' && readHex(at + 2, 4) ? 6 : 2;
}

Units Decode(Units const& encoded) {
    Units decoded;
    decoded.reserve(encoded.size());
    for (std::size_t at = 0; at < encoded.size();) {
        char value = 0;
        auto const taken = ReadEscape(encoded, at, value);
        decoded.push_back({value, encoded[at].begin, encoded[at + taken - 1].end});
        at += taken;
    }
    return decoded;
}

Units DecodeAll(std::string_view text, int encodings = kMostEncodings) {
    Units units;
    units.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at)
        units.push_back({text[at], at, at + 1});
    for (int i = 0; i < encodings; ++i) {
        auto const before = units.size();
        units = Decode(units);
        if (units.size() == before) break;
    }
    return units;
}

std::string TextOf(Units const& units) {
    std::string text;
    for (auto const& unit : units)
        text += unit.value;
    return text;
}

}  // namespace

bool IsToken(std::string_view text) {
    return text.size() >= kShortestToken &&
           std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

void Redact(std::string& text, std::string_view secret) {
    if (secret.empty()) return;
    // One that is next to nothing once it is decoded, of backslashes for instance, is looked for as
    // it is: almost any text would hold the rest of it.
    bool const isDecoded = secret.size() < kShortestRun || DecodeAll(secret).size() >= kShortestRun;
    int const encodings = isDecoded ? kMostEncodings : 0;
    auto const wanted = TextOf(DecodeAll(secret, encodings));
    auto const units = DecodeAll(text, encodings);
    auto const plain = TextOf(units);
    auto const holds = [&](std::size_t at, std::size_t length) {
        return at + length <= plain.size() &&
               wanted.find(plain.data() + at, 0, length) != std::string::npos;
    };

    std::string redacted;
    std::size_t copied = 0;
    for (std::size_t at = 0; at < plain.size();) {
        std::size_t length = std::min(kShortestRun, wanted.size());
        if (!holds(at, length)) {
            ++at;
            continue;
        }
        while (holds(at, length + 1))
            ++length;
        redacted.append(text, copied, units[at].begin - copied).append("...");
        at += length;
        copied = units[at - 1].end;
    }
    text = redacted.append(text, copied);
}

void RedactRefusal(HttpResponse& answer, std::string_view secret) {
    if (answer.status >= 200 && answer.status <= 299) return;
    if (answer.body.size() > kLongestError) answer.body.clear();
    Redact(answer.body, secret);
}

}  // namespace quillosdk
