#include "moxcore/utility/UserEntry.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace moxcore::utility {

std::optional<UserEntry> OwnUserEntry() {
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(1024);
    while (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
        buffer.resize(2 * buffer.size());
    if (!found) return std::nullopt;
    return UserEntry{found->pw_name, found->pw_dir};
}

}  // namespace moxcore::utility
