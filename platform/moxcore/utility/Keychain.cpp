#include "moxcore/utility/Keychain.h"

#include <unistd.h>

#include "moxcore/string/Conversions.h"
#include "moxcore/utility/UserEntry.h"

namespace moxcore::utility::Keychain {

string::UTF16String GetNexoUserID() {
    auto const entry = OwnUserEntry();
    return string::UTF8to16(entry ? entry->name : std::to_string(getuid()));
}

}  // namespace moxcore::utility::Keychain
