#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "service/http/Limits.h"
#include "service/routes/FaultOptions.h"
#include "service/routes/RateLimiter.h"
#include "service/store/SampleData.h"

namespace quilloservice {

/// What the command line says.
struct Options {
    std::string dataDirectory;
    std::string host = "127.0.0.1";
    int port = 0;  ///< 0: the one used last with the data directory, or any
    SampleSize sample = SampleSize::Small;
    bool trustLocalUser = false;
    bool stopWithStdin = false;
    std::string allowOrigin;  ///< of pages that may use the interface; empty: none
    http::Limits http{};      ///< but the number of connections, which follows from the system's
    std::optional<RateLimit> limit;
    FaultOptions faults;
    bool help = false;
};

/// A command line that cannot be understood; the message says what is wrong and what is right.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the arguments after the program's name. Throws UsageError.
Options ParseOptions(std::vector<std::string> const& arguments);

/// What --help prints.
extern char const* const kHelp;

}  // namespace quilloservice
