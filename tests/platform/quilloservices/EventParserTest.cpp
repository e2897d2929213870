#include "quilloclient/EventParser.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "moxcore/config/Error.h"

namespace {

using quillo::Event;
using quillo::EventParser;
using testing::ElementsAre;

/// The events in `stream` as "id/type/data", fed in pieces of `size` bytes.
std::vector<std::string> Parse(std::string const& stream, std::size_t size) {
    std::vector<std::string> events;
    EventParser parser([&](Event const& event) {
        events.push_back(event.id + "/" + event.type + "/" + event.data);
    });
    for (std::size_t at = 0; at < stream.size(); at += size)
        parser.Feed(std::string_view(stream).substr(at, size));
    return events;
}

TEST(EventParserTest, ReadsEventsInWhateverPiecesTheyCome) {
    std::string const stream =
        "\xEF\xBB\xBF"  // a byte order mark
        "id: 1\n: a comment\nevent: ready\ndata: {}\n\n"
        "data:first\ndata: second\ndata:  third\n\n"  // no type; the ID stays
        "event: nothing\n\n"                          // without data: none
        "data\n\n"                                    // with an empty text
        "id: 2\r\nevent: changed\r\nretry: 5\r\ndata\r\ndata: x\r\n\r\n"
        "id: 3\x01\ndata: last\r\r"
        "data: never ended";
    for (std::size_t size = 1; size <= stream.size(); ++size)
        EXPECT_THAT(Parse(stream, size), ElementsAre("1/ready/{}", "1//first\nsecond\n third",
                                                     "1//", "2/changed/\nx", "2//last"))
            << size;
}

TEST(EventParserTest, RefusesWhatHasNoEnd) {
    for (std::size_t const size : {1, 100'000}) {
        std::string const line(5'000, 'x');
        EXPECT_THROW(Parse(line, size), moxcore::config::ResultException);
        EXPECT_THROW(Parse(line + "\n", size), moxcore::config::ResultException);
        std::string event;
        while (event.size() < 5'000)
            event += "data: " + std::string(100, 'x') + "\n";
        EXPECT_THROW(Parse(event, size), moxcore::config::ResultException);
    }
}

}  // namespace
