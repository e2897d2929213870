#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "service/RateLimiter.h"
#include "service/SampleData.h"
#include "service/http/Limits.h"

namespace quilloservice {

/// Faults that tests of clients ask for.
struct FaultOptions {
    std::chrono::milliseconds latency{};                 ///< every answer is this much later
    double failRate = 0;                                 ///< share of /v1 requests answered 500
    std::optional<std::int64_t> dropUploadAfterBytes{};  ///< each upload is cut there once
};

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
Options ParseOptions(const std::vector<std::string>& arguments);

/// What --help prints.
extern const char* const kHelp;

}  // namespace quilloservice
