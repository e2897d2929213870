#include "service/http/Preconditions.h"

#include <algorithm>
#include <string>

namespace quilloservice::http {

namespace {

/// Whether a list of entity tags contains `tag`. Weak comparison ignores "W/"; strong comparison
/// never matches a weak tag.
bool Names(std::string const& list, std::string_view tag, bool weakly) {
    auto elements = ListElements(list);
    return std::any_of(elements.begin(), elements.end(), [&](std::string_view element) {
        if (weakly && element.starts_with("W/")) element.remove_prefix(2);
        return element == "*" || element == tag;
    });
}

}  // namespace

Precondition CheckPreconditions(Request const& request, std::string_view tag) {
    std::optional<std::string> match = request.ListHeader("If-Match");
    if (match && !Names(*match, tag, /*weakly=*/false)) return Precondition::Failed;
    std::optional<std::string> noneMatch = request.ListHeader("If-None-Match");
    if (noneMatch && Names(*noneMatch, tag, /*weakly=*/true)) return Precondition::NotModified;
    return Precondition::Holds;
}

std::optional<std::string_view> ApplicableRange(Request const& request, std::string_view tag) {
    if (request.method != "GET") return std::nullopt;
    std::optional<std::string_view> range = request.Header("Range");
    if (!range || request.Header("If-Range").value_or(tag) != tag) return std::nullopt;
    return range;
}

}  // namespace quilloservice::http
