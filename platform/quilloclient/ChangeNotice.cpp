#include "quilloclient/ChangeNotice.h"

#include <nlohmann/json.hpp>

namespace quillo {
namespace {

struct ListName {
    char const* name;
    ListKind kind;
};

constexpr ListName kLists[] = {{"accounts", ListKind::Accounts},
                               {"workspaces", ListKind::Teams},
                               {"projects", ListKind::Projects},
                               {"assets", ListKind::Assets}};

std::string TextIn(nlohmann::json const& object, char const* name) {
    auto const found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

}  // namespace

std::optional<ListCache::Key> ReadChangeNotice(std::string const& data) {
    auto const notice = nlohmann::json::parse(data, nullptr, /*allow_exceptions=*/false);
    if (!notice.is_object()) return std::nullopt;
    auto const list = TextIn(notice, "list");
    for (auto const& known : kLists)
        if (list == known.name)
            return ListCache::Key{known.kind, moxcore::utility::Guid(TextIn(notice, "of"))};
    return std::nullopt;
}

}  // namespace quillo
