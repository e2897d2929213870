#pragma once

#include <optional>
#include <string>

namespace moxcore::utility {

/// What the system's user database says of the process's owner.
struct UserEntry {
    std::string name;
    std::string home;
};

/// Nothing where the database has no entry. Any thread. Internal to this library.
[[nodiscard]] std::optional<UserEntry> OwnUserEntry();

}  // namespace moxcore::utility
