#include "service/http/RequestParser.h"

#include <algorithm>
#include <boost/beast/http/basic_parser.hpp>
#include <cstdint>
#include <limits>
#include <string>

#include "service/base/ApiError.h"
#include "service/base/Text.h"
#include "service/http/UrlEncoding.h"

namespace quilloservice::http {

namespace beast = boost::beast;

namespace {

std::string_view View(beast::string_view text) {
    return {text.data(), text.size()};
}

ApiError Malformed(std::string const& what) {
    return ApiError::BadRequest("The request cannot be understood: " + what + ".");
}

ApiError HeadTooLarge() {
    return {431, "head_too_large",
            "A header may have 8 KiB, all headers together 64 KiB. Send less."};
}

/// Checks that lines end with CR LF, hold no control characters, and are not folded.
void CheckLines(std::string_view head) {
    for (std::size_t i = 0; i < head.size(); ++i) {
        bool carriageReturn = head[i] == '\r';
        bool endsLine = carriageReturn && i + 1 < head.size() && head[i + 1] == '\n';
        if (head[i] == '\0' || head[i] == '\n' || (carriageReturn && !endsLine)) {
            throw Malformed("a control character in its head");
        }
        if (!endsLine) continue;
        ++i;
        if (i + 1 < head.size() && (head[i + 1] == ' ' || head[i + 1] == '\t')) {
            throw Malformed("a header that goes on in the next line");
        }
    }
}

void CheckLengths(std::string_view head) {
    std::size_t lineEnd = head.find("\r\n");
    std::string_view line = head.substr(0, lineEnd);
    std::size_t blank = std::min(line.find(' '), line.size());
    std::string_view target = line.substr(std::min(blank + 1, line.size()));
    if (target.substr(0, target.find(' ')).size() > RequestParser::kLongestTarget) {
        throw ApiError(414, "uri_too_long", "An address may have 8,192 bytes.");
    }
    if (blank > 64) throw Malformed("a method of more than 64 characters");
    while (lineEnd != std::string_view::npos) {
        head.remove_prefix(lineEnd + 2);
        lineEnd = head.find("\r\n");
        if (std::min(lineEnd, head.size()) > RequestParser::kLongestHeader) throw HeadTooLarge();
    }
}

/// Whether `text` has only characters of a host with an optional port; no user name, no path.
bool IsAuthority(std::string_view text) {
    return text.size() <= 255 && std::all_of(text.begin(), text.end(), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      std::string_view("-._~:[]").find(c) != std::string_view::npos;
           });
}

void ReadTarget(Request& request, std::string_view target) {
    constexpr std::string_view kScheme = "http://";
    if (EqualsIgnoringCase(target.substr(0, kScheme.size()), kScheme)) {
        target.remove_prefix(kScheme.size());
        std::size_t end = std::min(target.find_first_of("/?"), target.size());
        request.host = target.substr(0, end);
        if (request.host.empty() || !IsAuthority(request.host)) {
            throw Malformed("an address without a host");
        }
        target.remove_prefix(end);
    } else if (target == "*" && request.method == "OPTIONS") {
        request.path = "*";
        return;
    } else if (!target.starts_with('/')) {
        throw Malformed("an address that does not begin with \"/\"");
    }
    if (target.find('#') != std::string_view::npos) throw Malformed("a fragment in its address");
    std::size_t query = std::min(target.find('?'), target.size());
    std::optional<std::string> path = PercentDecode(target.substr(0, query));
    if (!path) throw Malformed("a percent sign in its address that encodes nothing");
    request.path = path->empty() ? "/" : *std::move(path);
    request.parameters = ParseForm(target.substr(std::min(query + 1, target.size())));
}

void ReadHost(Request& request) {
    // An absolute address in the request line takes precedence over the header.
    std::optional<std::string_view> header = request.Header("Host");
    if (!header && request.minorVersion > 0) throw Malformed("the header Host is missing");
    if (header && !IsAuthority(*header)) throw Malformed("the header Host is no name of a host");
    if (request.host.empty()) request.host = header.value_or("");
}

/// Reads the length of the body. Throws if it is ambiguous.
void ReadFraming(Request& request) {
    std::optional<std::string_view> length = request.Header("Content-Length");
    std::optional<std::string_view> encoding = request.Header("Transfer-Encoding");
    if (encoding) {
        if (request.minorVersion == 0) throw Malformed("Transfer-Encoding in HTTP/1.0");
        if (!EqualsIgnoringCase(*encoding, "chunked")) {
            throw ApiError(501, "not_implemented",
                           "The only transfer coding that is taken is chunked.");
        }
        request.bodyLength = std::nullopt;
    } else if (length) {
        request.bodyLength = ParseNumber(*length);
        if (!request.bodyLength) throw Malformed("Content-Length is no number");
    }
}

void ReadConnection(Request& request) {
    request.closes = request.minorVersion == 0;
    std::string options = request.ListHeader("Connection").value_or("");
    for (std::string_view option : ListElements(options)) {
        if (EqualsIgnoringCase(option, "close")) request.closes = true;
    }
    std::optional<std::string_view> expectation = request.Header("Expect");
    if (!expectation) return;
    if (!EqualsIgnoringCase(*expectation, "100-continue")) {
        throw ApiError(417, "expectation_failed", "The only expectation is 100-continue.");
    }
    request.expectsContinue = request.minorVersion > 0;
}

}  // namespace

/// Turns the events of Beast's parser into a Request and pieces of the body.
class RequestParser::Machine : public beast::http::basic_parser<true> {
public:
    Machine() {
        header_limit(kLongestHead);
        body_limit(std::numeric_limits<std::uint64_t>::max());
        eager(false);
    }

    Request request;
    std::string target;
    std::function<void(std::string_view)> const* take = nullptr;

    /// Whether Beast can parse `rest` of the body: when it has read the size of the last chunk, it
    /// requires the bytes of the shortest last chunk.
    [[nodiscard]] bool CanTake(std::string_view rest) const {
        constexpr std::string_view kShortest = "0\r\n\r\n";
        if (rest.size() >= kShortest.size() || !chunked() || leftOfChunk > 0) return true;
        if (rest.starts_with("\r\n")) rest.remove_prefix(2);  // the end of the previous chunk
        return !rest.starts_with('0');
    }

private:
    using Error = beast::error_code;

    void on_request_impl(beast::http::verb, beast::string_view method, beast::string_view address,
                         int version, Error&) override {
        request.method = View(method);
        target = View(address);
        request.minorVersion = version % 10;
    }
    void on_field_impl(beast::http::field, beast::string_view name, beast::string_view value,
                       Error&) override {
        // Trailers are ignored.
        if (!is_header_done()) request.headers.emplace_back(View(name), View(value));
    }
    std::size_t on_body_impl(beast::string_view body, Error&) override {
        (*take)(View(body));
        return body.size();
    }
    std::size_t on_chunk_body_impl(std::uint64_t, beast::string_view body, Error&) override {
        leftOfChunk -= body.size();
        (*take)(View(body));
        return body.size();
    }
    void on_response_impl(int, beast::string_view, int, Error&) override {}
    void on_header_impl(Error&) override {}
    void on_body_init_impl(boost::optional<std::uint64_t> const&, Error&) override {}
    void on_chunk_header_impl(std::uint64_t size, beast::string_view extensions,
                              Error& error) override {
        leftOfChunk = size;
        // Other parsers could take a control character in a quoted value for the line's end.
        auto isControl = [](unsigned char c) { return (c < ' ' && c != '\t') || c == 0x7F; };
        if (std::any_of(extensions.begin(), extensions.end(), isControl)) {
            error = beast::http::error::bad_chunk_extension;
        }
    }
    void on_finish_impl(Error&) override {}

    std::uint64_t leftOfChunk = 0;
};

RequestParser::RequestParser() : machine(std::make_unique<Machine>()) {}

RequestParser::~RequestParser() = default;

Request& RequestParser::GetRequest() {
    return machine->request;
}

std::size_t RequestParser::ReadHead(std::string_view bytes) {
    // Some clients send an empty line after the body of the previous request.
    std::size_t begin = 0;
    while (begin < 4 && bytes.substr(begin).starts_with("\r\n"))
        begin += 2;
    std::string_view head = bytes.substr(begin);
    constexpr std::string_view kEnding = "\r\n\r\n";
    std::size_t end = head.find(kEnding, searched > 3 ? searched - 3 : 0);
    bool whole = end != std::string_view::npos;
    if (whole) head = head.substr(0, end + kEnding.size());
    // An incomplete head is not checked anew for every byte, which would take quadratic time.
    bool longLine = head.size() > kLongestTarget + 128 && head.find("\r\n") > kLongestTarget + 128;
    if (whole || longLine) CheckLengths(head);
    if (head.size() > kLongestHead) throw HeadTooLarge();
    if (!whole) {
        searched = head.size();
        return 0;
    }

    CheckLines(head);
    beast::error_code error;
    machine->put(boost::asio::buffer(head.data(), head.size()), error);
    if (error == beast::http::error::bad_version) {
        throw ApiError(505, "http_version", "The service speaks HTTP/1.1 and HTTP/1.0.");
    }
    if (error || !machine->is_header_done()) {
        throw Malformed(error ? error.message() : "its head does not end");
    }
    Request& request = machine->request;
    ReadTarget(request, machine->target);
    ReadHost(request);
    ReadFraming(request);
    ReadConnection(request);
    return begin + head.size();
}

std::size_t RequestParser::ReadBody(std::string_view bytes,
                                    std::function<void(std::string_view)> const& take) {
    machine->take = &take;
    std::size_t read = 0;
    while (!machine->is_done() && read < bytes.size()) {
        std::string_view rest = bytes.substr(read);
        if (!machine->CanTake(rest)) break;
        beast::error_code error;
        std::size_t count = machine->put(boost::asio::buffer(rest.data(), rest.size()), error);
        read += count;
        if (error == beast::http::error::need_more) {
            if (rest.size() - count > kLongestChunkLine) {
                throw Malformed("a line of more than 8 KiB in its chunked body");
            }
            break;
        }
        if (error) throw Malformed(error.message());
    }
    machine->take = nullptr;
    return read;
}

bool RequestParser::IsComplete() const {
    return machine->is_done();
}

}  // namespace quilloservice::http
