#include "quilloauth/LoopbackRequest.h"

#include <algorithm>

namespace quilloauth {

std::optional<std::string> ReadLoopbackQuery(std::string_view head, std::string_view path) {
    auto rest = head.substr(0, head.find("\r\n"));
    auto const word = [&rest] {
        auto const end = std::min(rest.find(' '), rest.size());
        auto const taken = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        return taken;
    };
    auto const method = word();
    auto const target = word();
    auto const version = word();
    bool const isPlain = std::all_of(target.begin(), target.end(),
                                     [](unsigned char c) { return c > ' ' && c < 0x7F; });
    auto const mark = std::min(target.find('?'), target.size());
    if (method != "GET" || !isPlain || target.substr(0, mark) != path ||
        !version.starts_with("HTTP/1."))
        return std::nullopt;
    return std::string(target.substr(std::min(mark + 1, target.size())));
}

}  // namespace quilloauth
