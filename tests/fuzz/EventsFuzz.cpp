// Server-sent events: whatever the pieces in which they come, they are those that the HTML standard
// makes of the stream, read here in its own words.

#include <algorithm>
#include <string>
#include <vector>

#include "moxcore/config/Error.h"
#include "quilloclient/ChangeNotice.h"
#include "quilloclient/EventParser.h"
#include "tests/fuzz/Fuzz.h"

namespace {

struct Seen {
    std::vector<std::string> events;  ///< ID, type and data, with a NUL behind each
    bool refused = false;
    friend bool operator==(Seen const&, Seen const&) = default;
};

Seen Feed(std::string_view stream, std::size_t pieceSize) {
    Seen seen;
    quillo::EventParser parser([&](quillo::Event const& event) {
        seen.events.push_back(event.id + '\0' + event.type + '\0' + event.data + '\0');
        static_cast<void>(quillo::ReadChangeNotice(event.data));
    });
    try {
        for (; !stream.empty(); stream.remove_prefix(std::min(pieceSize, stream.size())))
            parser.Feed(stream.substr(0, pieceSize));
    } catch (moxcore::config::ResultException const&) {
        seen.refused = true;
    }
    return seen;
}

std::vector<std::string> EventsOf(std::string_view stream) {
    std::vector<std::string> events;
    std::string id;
    std::string type;
    std::string data;
    if (stream.starts_with("\xEF\xBB\xBF")) stream.remove_prefix(3);
    for (;;) {
        auto const end = stream.find_first_of("\r\n");
        if (end == std::string_view::npos) return events;  // an event without an end is none
        auto const line = stream.substr(0, end);
        stream.remove_prefix(end + (stream.substr(end).starts_with("\r\n") ? 2 : 1));
        auto const colon = line.find(':');
        if (line.empty()) {
            if (!data.empty()) {
                data.pop_back();
                events.push_back(id + '\0' + type + '\0' + data + '\0');
            }
            type.clear();
            data.clear();
        } else if (colon != 0) {
            auto const field = line.substr(0, colon);
            auto value = colon == std::string_view::npos ? "" : line.substr(colon + 1);
            if (value.starts_with(' ')) value.remove_prefix(1);
            if (field == "event") type = value;
            if (field == "data") data.append(value) += '\n';
            // Stricter than the standard, which minds a NUL only: it goes back in a header.
            auto const isControl = [](unsigned char c) { return c < ' ' || c == 0x7F; };
            if (field == "id" && std::none_of(value.begin(), value.end(), isControl)) id = value;
        }
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const stream = fuzz::AsText(data, size);
    auto const whole = Feed(stream, std::max<std::size_t>(size, 1));
    if (!whole.refused) FUZZ_REQUIRE(whole.events == EventsOf(stream));
    for (std::size_t const pieceSize : {1, 3})
        FUZZ_REQUIRE(Feed(stream, pieceSize) == whole);
    return 0;
}
