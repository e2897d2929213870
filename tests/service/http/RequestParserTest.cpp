#include "service/http/RequestParser.h"

#include <gtest/gtest.h>

#include "service/base/ApiError.h"

namespace quilloservice::http {
namespace {

/// Parses `bytes` in pieces of `size`. Returns "METHOD PATH HOST BODY", or the error's status.
std::string ReadInPieces(std::string const& bytes, std::size_t size) {
    RequestParser parser;
    std::string input;
    std::string body;
    std::size_t fed = 0;
    bool headRead = false;
    auto feed = [&] {
        std::size_t count = std::min(size, bytes.size() - fed);
        input.append(bytes, fed, count);
        fed += count;
        return count > 0;
    };
    try {
        while (!headRead && feed()) {
            std::size_t read = parser.ReadHead(input);
            input.erase(0, read);
            headRead = read > 0;
        }
        if (!headRead) return "unfinished";
        do {
            input.erase(0, parser.ReadBody(input, [&](auto piece) { body += piece; }));
        } while (!parser.IsComplete() && feed());
    } catch (ApiError const& error) {
        return std::to_string(error.status);
    }
    Request const& request = parser.GetRequest();
    std::string rest = input + bytes.substr(fed);
    return request.method + " " + request.path + " " + request.host + " " + body +
           (parser.IsComplete() ? "" : " unfinished") + (rest.empty() ? "" : " + " + rest);
}

TEST(RequestParserTest, ParsesOneRequestOrRefusesIt) {
    std::string const host = "Host: h\r\n";
    std::string const get = "GET / HTTP/1.1\r\n";
    std::string const post = "POST /p HTTP/1.1\r\nHost: h\r\n";
    std::string const chunked = post + "Transfer-Encoding: chunked\r\n\r\n";
    struct Row {
        std::string bytes;
        std::string expected;
    };
    for (Row const& row : std::vector<Row>{
             {get + host + "\r\n", "GET / h "},
             {"\r\n\r\n" + get + host + "\r\n", "GET / h "},
             {get + host + "\r\nGET", "GET / h  + GET"},
             {"GET /a%20b?x=%41&y HTTP/1.1\r\n" + host + "\r\n", "GET /a b h "},
             {"GET http://other:8/a HTTP/1.1\r\n" + host + "\r\n", "GET /a other:8 "},
             {"GET HTTP://other?q HTTP/1.1\r\n" + host + "\r\n", "GET / other "},
             {"OPTIONS * HTTP/1.1\r\n" + host + "\r\n", "OPTIONS * h "},
             {"GET / HTTP/1.0\r\n\r\n", "GET /  "},
             {get + "\r\n", "400"},
             {get + host + host + "\r\n", "400"},
             {get + "Host: a b\r\n\r\n", "400"},
             {get + "Host: user@h\r\n\r\n", "400"},
             {get + host + "X: a\r\n b\r\n\r\n", "400"},
             {get + host + "X : a\r\n\r\n", "400"},
             {get + host + "X: a\nY: b\r\n\r\n", "400"},
             {get + host + "X: a\rY: b\r\n\r\n", "400"},
             {get + host + std::string("X: a\0b\r\n\r\n", 10), "400"},
             {get + host + "nonsense\r\n\r\n", "400"},
             {"GET\r\n\r\n", "400"},
             {"GET a HTTP/1.1\r\n" + host + "\r\n", "400"},
             {"GET * HTTP/1.1\r\n" + host + "\r\n", "400"},
             {"GET /# HTTP/1.1\r\n" + host + "\r\n", "400"},
             {"GET /% HTTP/1.1\r\n" + host + "\r\n", "400"},
             {"CONNECT h:1 HTTP/1.1\r\n" + host + "\r\n", "400"},
             {"GET / HTTP/2.0\r\n" + host + "\r\n", "505"},
             {"GET /" + std::string(8191, 'a') + " HTTP/1.1\r\n" + host + "\r\n",
              "GET /" + std::string(8191, 'a') + " h "},
             {"GET /" + std::string(8192, 'a') + " HTTP/1.1\r\n" + host + "\r\n", "414"},
             {"GET /" + std::string(100'000, 'a'), "414"},
             {std::string(100'000, 'x'), "400"},
             {get + host + "X: " + std::string(8189, 'a') + "\r\n\r\n", "GET / h "},
             {get + host + "X: " + std::string(8190, 'a') + "\r\n\r\n", "431"},
             {get + host + "X: " + std::string(100'000, 'a'), "431"},
             // Bodies.
             {post + "Content-Length: 4\r\n\r\nbodyGET", "POST /p h body + GET"},
             {post + "Content-Length: 4\r\n\r\nbo", "POST /p h bo unfinished"},
             {post + "\r\nGET", "POST /p h  + GET"},
             {post + "Content-Length: 5\r\nContent-Length: 5\r\n\r\n", "400"},
             {post + "Content-Length: 5, 5\r\n\r\n", "400"},
             {post + "Content-Length: -5\r\n\r\n", "400"},
             {post + "Content-Length: +5\r\n\r\n", "400"},
             {post + "Content-Length: 0x1A\r\n\r\n", "400"},
             {post + "Content-Length: 99999999999999999999\r\n\r\n", "400"},
             {post + "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n", "400"},
             {post + "Transfer-Encoding: gzip\r\n\r\n", "501"},
             {post + "Transfer-Encoding: gzip, chunked\r\n\r\n", "501"},
             {post + "Transfer-Encoding: chunked, identity\r\n\r\n", "501"},
             {"POST / HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n", "400"},
             {post + "Transfer-Encoding: Chunked\r\n\r\n2\r\nab\r\n0\r\n\r\n", "POST /p h ab"},
             {chunked + "2;x=y;z=\"q\"\r\nab\r\n1\r\nc\r\n0\r\nTrailer: t\r\n\r\nGET",
              "POST /p h abc + GET"},
             {chunked + "2\r\nabc\r\n0\r\n\r\n", "400"},
             {chunked + "x\r\n", "400"},
             {chunked + "1;x=\"\n\"\r\na\r\n0\r\n\r\n", "400"},
             {chunked + "-1\r\n", "400"},
             {chunked + "11111111111111111\r\n", "400"},
             {chunked + "1;" + std::string(10'000, 'x'), "400"},
             {chunked + "0\r\nX: " + std::string(10'000, 'x'), "400"},
             {post + "Expect: something\r\n\r\n", "417"},
         }) {
        std::string seen = row.bytes.substr(0, 300);
        EXPECT_EQ(ReadInPieces(row.bytes, row.bytes.size()), row.expected) << seen;
        EXPECT_EQ(ReadInPieces(row.bytes, 1), row.expected) << seen;
    }
}

TEST(RequestParserTest, ReadsConnectionOptions) {
    auto read = [](std::string const& version, std::string const& headers) {
        RequestParser parser;
        EXPECT_GT(parser.ReadHead("GET / HTTP/" + version + "\r\nHost: h\r\n" + headers + "\r\n"),
                  0u);
        return parser.GetRequest();
    };
    EXPECT_FALSE(read("1.1", "").closes);
    EXPECT_TRUE(read("1.0", "Connection: keep-alive\r\n").closes);
    EXPECT_TRUE(read("1.1", "Connection: x, Close\r\n").closes);
    EXPECT_TRUE(read("1.1", "Connection: x\r\nConnection: close\r\n").closes);
    EXPECT_TRUE(read("1.1", "Expect: 100-Continue\r\n").expectsContinue);
    EXPECT_EQ(read("1.1", "Transfer-Encoding: chunked\r\n").bodyLength, std::nullopt);
}

}  // namespace
}  // namespace quilloservice::http
