// What a connection sends: one request after the other. Where each ends must not depend on how the
// bytes arrive, and must be what a stricter reader makes of them: else somebody's body would be run
// as a request.

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <vector>

#include "service/base/ApiError.h"
#include "service/base/Text.h"
#include "service/http/Preconditions.h"
#include "service/http/RequestParser.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using quilloservice::ApiError;
using quilloservice::PercentEncode;
using quilloservice::http::EqualsIgnoringCase;
using quilloservice::http::Fields;
using quilloservice::http::Request;
using quilloservice::http::RequestParser;

struct Message {
    Request head;
    std::string body;
    bool complete = false;
    std::size_t headSize = 0;
    std::size_t bodySize = 0;  ///< as it was sent

    friend bool operator==(Message const& one, Message const& other) {
        return one.head.method == other.head.method && one.head.path == other.head.path &&
               one.head.parameters == other.head.parameters && one.head.host == other.head.host &&
               one.head.headers == other.head.headers && one.body == other.body &&
               one.head.minorVersion == other.head.minorVersion &&
               one.head.bodyLength == other.head.bodyLength && one.complete == other.complete &&
               one.head.closes == other.head.closes;
    }
};

struct Seen {
    std::vector<Message> messages;
    bool refused = false;
    friend bool operator==(Seen const&, Seen const&) = default;
};

/// Reads as a connection does: pieces are added to what was not taken up before.
class Connection {
public:
    void Receive(std::string_view piece) {
        input.append(piece);
        try {
            while (!seen.refused && Read()) {
            }
        } catch (ApiError const& refused) {
            FUZZ_REQUIRE(refused.status >= 400 && refused.status < 600);
            seen.refused = true;
        }
    }
    [[nodiscard]] Seen const& Result() const { return seen; }

private:
    /// Whether there may be more to read.
    bool Read() {
        if (!parser) parser.emplace();
        if (!inBody) {
            auto const size = parser->ReadHead(input);
            if (size == 0) return false;
            FUZZ_REQUIRE(size <= input.size());
            seen.messages.push_back({.head = parser->GetRequest(), .headSize = size});
            input.erase(0, size);
            inBody = true;
        }
        auto& message = seen.messages.back();
        auto const size = parser->ReadBody(
            input, [&](std::string_view content) { message.body.append(content); });
        FUZZ_REQUIRE(size <= input.size());
        input.erase(0, size);
        message.bodySize += size;
        message.complete = parser->IsComplete();
        if (!message.complete) return false;
        parser.reset();
        inBody = false;
        return !input.empty();
    }

    std::string input;
    std::optional<RequestParser> parser;
    bool inBody = false;
    Seen seen;
};

Seen Read(std::string_view bytes, std::size_t pieceSize) {
    Connection connection;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(pieceSize, bytes.size())))
        connection.Receive(bytes.substr(0, pieceSize));
    return connection.Result();
}

/// Takes a line and its CRLF off `rest`; none when it has none, or holds another control character.
std::optional<std::string_view> TakeLine(std::string_view& rest) {
    auto const end = rest.find("\r\n");
    if (end == std::string_view::npos) return std::nullopt;
    auto const line = rest.substr(0, end);
    rest.remove_prefix(end + 2);
    for (unsigned char const c : line)
        if ((c < ' ' && c != '\t') || c == 0x7F) return std::nullopt;
    return line;
}

/// The content of a chunked body that takes up all of `bytes`, by the letter of RFC 9112.
std::optional<std::string> FromChunks(std::string_view bytes) {
    std::string content;
    for (;;) {
        auto const line = TakeLine(bytes);
        if (!line) return std::nullopt;
        std::uint64_t size = 0;
        auto const [end, error] =
            std::from_chars(line->data(), line->data() + line->size(), size, 16);
        auto const after = line->substr(static_cast<std::size_t>(end - line->data()));
        if (error != std::errc() || line->starts_with('-')) return std::nullopt;
        if (!after.empty() && after.find_first_not_of(" \t") != after.find(';'))
            return std::nullopt;
        if (size == 0) break;
        if (size > bytes.size() || !bytes.substr(size).starts_with("\r\n")) return std::nullopt;
        content += bytes.substr(0, size);
        bytes.remove_prefix(size + 2);
    }
    for (;;) {
        auto const trailer = TakeLine(bytes);
        if (!trailer) return std::nullopt;
        if (trailer->empty()) return bytes.empty() ? std::optional(content) : std::nullopt;
    }
}

std::size_t CountOf(Fields const& headers, std::string_view name) {
    return static_cast<std::size_t>(
        std::count_if(headers.begin(), headers.end(),
                      [&](auto const& header) { return EqualsIgnoringCase(header.first, name); }));
}

void RequireSound(Request const& head) {
    constexpr std::string_view kMarks = "!#$%&'*+-.^_`|~";
    auto const isToken = [&](std::string_view text) {
        return !text.empty() && std::all_of(text.begin(), text.end(), [&](unsigned char c) {
            return (c < 0x80 && std::isalnum(c)) ||
                   kMarks.find(static_cast<char>(c)) != kMarks.npos;
        });
    };
    FUZZ_REQUIRE(isToken(head.method));
    FUZZ_REQUIRE(head.path.starts_with('/') || (head.path == "*" && head.method == "OPTIONS"));
    for (unsigned char const c : head.host)
        FUZZ_REQUIRE(c > ' ' && c < 0x7F && c != '/' && c != '@' && c != '"' && c != '<');
    for (auto const& [name, value] : head.headers) {
        FUZZ_REQUIRE(isToken(name));
        for (unsigned char const c : value)
            FUZZ_REQUIRE((c >= ' ' || c == '\t') && c != 0x7F);
    }
    auto const lengths = CountOf(head.headers, "Content-Length");
    auto const codings = CountOf(head.headers, "Transfer-Encoding");
    auto const hosts = CountOf(head.headers, "Host");
    FUZZ_REQUIRE(hosts == 1 || (hosts == 0 && head.minorVersion == 0));
    FUZZ_REQUIRE(lengths + codings <= 1);
    FUZZ_REQUIRE(head.bodyLength.has_value() == (codings == 0));
    FUZZ_REQUIRE(head.bodyLength.value_or(0) >= 0);
    FUZZ_REQUIRE(head.minorVersion == 0 || head.minorVersion == 1);
    FUZZ_REQUIRE(head.minorVersion == 1 || (head.closes && !head.expectsContinue));
    try {
        static_cast<void>(quilloservice::http::CheckPreconditions(head, "\"tag\""));
        static_cast<void>(quilloservice::http::ApplicableRange(head, "\"tag\""));
    } catch (ApiError const& refused) {
        FUZZ_REQUIRE(refused.status == 400);
    }
}

/// Writes the request in a plain form; it is read as the same.
void RequireSameWhenWritten(Message const& message) {
    std::string path;
    for (char const c : message.head.path)
        path += c == '/' || c == '*' ? std::string(1, c) : PercentEncode({&c, 1});
    if (!message.head.host.empty() && message.head.path != "*")
        path = "http://" + message.head.host + path;
    char separator = '?';
    for (auto const& [name, value] : message.head.parameters) {
        path += separator + PercentEncode(name) + '=' + PercentEncode(value);
        separator = '&';
    }
    if (path.size() > RequestParser::kLongestTarget) return;
    auto text = message.head.method + ' ' + path + " HTTP/1." +
                std::to_string(message.head.minorVersion) + "\r\n";
    for (auto const& [name, value] : message.head.headers)
        text += name + ":" + value + "\r\n";
    text += "\r\n";
    if (message.head.bodyLength) {
        text += message.body;
    } else {
        for (char const c : message.body)
            text += std::string("1\r\n") + c + "\r\n";
        text += "0\r\n\r\n";
    }
    auto const again = Read(text, text.size());
    FUZZ_REQUIRE(!again.refused && again.messages.size() == 1 && again.messages[0] == message);
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const bytes = fuzz::AsText(data, size);
    auto const whole = Read(bytes, std::max<std::size_t>(size, 1));
    for (std::size_t const pieceSize : {1, 3, 100})
        FUZZ_REQUIRE(Read(bytes, pieceSize) == whole);

    std::size_t at = 0;
    for (auto const& message : whole.messages) {
        auto head = bytes.substr(at, message.headSize);
        while (head.starts_with("\r\n"))  // before a request
            head.remove_prefix(2);
        FUZZ_REQUIRE(head.ends_with("\r\n\r\n") && head.find("\r\n\r\n") + 4 == head.size());
        RequireSound(message.head);
        at += message.headSize;
        auto const sent = bytes.substr(at, message.bodySize);
        at += message.bodySize;
        if (message.head.bodyLength) {
            FUZZ_REQUIRE(sent == message.body);
            FUZZ_REQUIRE(
                message.complete ==
                (message.body.size() == static_cast<std::uint64_t>(*message.head.bodyLength)));
        } else if (message.complete) {
            FUZZ_REQUIRE(FromChunks(sent) == message.body);
        }
        if (message.complete) RequireSameWhenWritten(message);
    }
    return 0;
}
