#include "moxcore/utility/Keychain.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <string>

#include "moxcore/string/Conversions.h"

namespace moxcore::utility::Keychain {

string::UTF16String GetNexoUserID() {
    auto const user = getuid();
    passwd entry{};
    passwd* found = nullptr;
    std::array<char, 4096> buffer{};
    getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found);
    return string::UTF8to16(found ? found->pw_name : std::to_string(user));
}

}  // namespace moxcore::utility::Keychain
