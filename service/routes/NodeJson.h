#pragma once

#include <nlohmann/json.hpp>

#include "service/store/Nodes.h"

namespace quilloservice {

/// {"id", "name"}
inline nlohmann::json NamedJson(Node const& node) {
    return {{"id", node.id}, {"name", node.name}};
}

/// {"id", "name", "type"}, for the contents of a folder
inline nlohmann::json TypedJson(Node const& node) {
    nlohmann::json object = NamedJson(node);
    object["type"] = node.kind;
    return object;
}

}  // namespace quilloservice
