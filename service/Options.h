#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "service/http/Limits.h"
#include "service/routes/FaultOptions.h"
#include "service/routes/RateLimiter.h"
#include "service/store/SampleData.h"

namespace quilloservice {

/// The options of the command line and the configuration file.
struct Options {
    std::string dataDirectory;
    std::string database;  ///< address of a PostgreSQL database; empty: SQLite in dataDirectory
    bool migrate = false;  ///< copy the records of dataDirectory to `database` instead of serving
    std::string host = "127.0.0.1";
    int port = 0;  ///< 0: the last port used with the data directory, or any free one
    SampleSize sample = SampleSize::Small;
    bool trustLocalUser = false;
    bool stopWithStdin = false;
    bool logRequests = false;      ///< a line of JSON on standard error for each request
    std::chrono::seconds drain{};  ///< how long a stop waits for running requests
    std::string publicAddress;     ///< "https://review.example"; empty: the one a client uses
    std::string proxy;             ///< IP address of the reverse proxy; empty: there is none
    std::string allowOrigin;       ///< origin of pages that may use the API; empty: none
    http::Limits http{};  ///< `connections` is replaced, by the system's limit of descriptors
    std::optional<RateLimit> limit;
    FaultOptions faults;
    bool help = false;
};

/// An invalid command line. The message says what is wrong and what is expected.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Parses the arguments after the program's name. They override `database`, the environment's
/// default of --database, which may be null; that overrides the file of --config. Throws
/// UsageError.
Options ParseOptions(std::vector<std::string> const& arguments, char const* database = nullptr);

/// The output of --help.
extern char const* const kHelp;

}  // namespace quilloservice
