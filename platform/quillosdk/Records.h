#pragma once

#include <optional>
#include <string>

#include "quillocommon/Guid.h"

namespace quillosdk {

// The service's records. Plain values; texts are UTF-8.

struct User {
    quillocommon::Guid id;
    std::string name;
};

struct Account {
    quillocommon::Guid id;
    std::string name;
};

struct Workspace {
    quillocommon::Guid id;
    std::string name;
};

struct Asset {
    std::optional<quillocommon::Guid> id;
    std::string name;
    std::string type;  ///< "folder", "file" or "version_stack"; others may come
};

struct Project {
    quillocommon::Guid id;
    std::string name;
    Asset rootAsset;  ///< the project's root folder
};

struct ReviewLink {
    std::optional<quillocommon::Guid> id;
    std::optional<std::string> url;
};

}  // namespace quillosdk
