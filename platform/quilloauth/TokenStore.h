#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "moxcore/threads/Clock.h"
#include "quillocommon/Export.h"

namespace quilloauth {

/// The tokens of a signed-in session. Never to be printed or traced.
struct Tokens {
    std::string access;
    std::string refresh;
    moxcore::threads::TimePoint expiry;  ///< of the access token

    friend bool operator==(Tokens const&, Tokens const&) = default;
};

/// Keeps the tokens in a file that only its owner may read, one pair for each service. Other
/// processes of the user share the file, so it is read anew each time. It is replaced as a whole:
/// whoever reads finds the old or the new, never half. A file that cannot be read counts as empty
/// and is replaced by the next Save. Waits for the disk. Any thread.
class QUILLOSERVICES_API TokenStore {
public:
    /// Keeps the file at `path` (UTF-8); a "<path>.lock" beside it orders the processes.
    explicit TokenStore(std::string path);

    /// The tokens for the service at `address`, if any. A file that others may read is closed to
    /// them first.
    [[nodiscard]] std::optional<Tokens> Load(std::string const& address);

    /// Puts `tokens` in place of those for `address`; false when the file cannot be written, which
    /// then is as it was: they last as long as this object.
    [[nodiscard]] bool Save(std::string const& address, Tokens const& tokens);

    /// Removes those for `address`; true when there are none afterwards.
    [[nodiscard]] bool Forget(std::string const& address);

private:
    std::string const path;

    std::mutex mutex;
    std::map<std::string, Tokens> unsaved;  // guarded by mutex; by address
};

}  // namespace quilloauth
