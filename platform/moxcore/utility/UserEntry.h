#pragma once

#include <optional>
#include <string>

namespace moxcore::utility {

/// The process owner's entry in the system's user database.
struct UserEntry {
    std::string name;
    std::string home;
};

/// Nothing where the database has no entry. Any thread. Internal to this library.
[[nodiscard]] std::optional<UserEntry> OwnUserEntry();

}  // namespace moxcore::utility
