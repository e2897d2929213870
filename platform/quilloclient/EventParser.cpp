#include "quilloclient/EventParser.h"

#include <algorithm>

#include "moxcore/config/Error.h"
#include "quillosdk/Transport.h"

namespace quillo {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// The service's are far shorter.
constexpr std::size_t kLongest = std::size_t{4} * 1024;

void RequireRoom(std::size_t size) {
    if (size > kLongest)
        throw moxcore::config::ResultException(quillosdk::kMalformedAnswer,
                                               "the stream of events holds one without an end");
}

}  // namespace

void EventParser::Feed(std::string_view bytes) {
    while (!bytes.empty()) {
        if (std::exchange(endedByReturn, false) && bytes.front() == '\n') bytes.remove_prefix(1);
        auto const end = bytes.find_first_of("\r\n");
        line += bytes.substr(0, end);
        RequireRoom(line.size());
        if (end == std::string_view::npos) return;
        endedByReturn = bytes[end] == '\r';
        bytes.remove_prefix(end + 1);
        EndLine();
    }
}

void EventParser::EndLine() {
    if (std::exchange(isFirstLine, false) && line.starts_with(kByteOrderMark))
        line.erase(0, kByteOrderMark.size());
    if (line.empty()) {
        if (!event.data.empty()) {
            event.data.pop_back();
            onEvent(event);
        }
        event.type.clear();
        event.data.clear();
        return;
    }
    std::string_view const text = line;
    auto const colon = text.find(':');
    auto value = colon == std::string_view::npos ? std::string_view() : text.substr(colon + 1);
    if (value.starts_with(' ')) value.remove_prefix(1);
    TakeField(text.substr(0, colon), value);
    line.clear();
}

void EventParser::TakeField(std::string_view name, std::string_view value) {
    // An ID goes back to the service in a header.
    bool const isPlain = std::none_of(value.begin(), value.end(),
                                      [](unsigned char c) { return c < 0x20 || c == 0x7F; });
    if (name == "id" && isPlain) event.id = value;
    if (name == "event") event.type = value;
    if (name != "data") return;
    event.data.append(value) += '\n';
    RequireRoom(event.data.size());
}

}  // namespace quillo
