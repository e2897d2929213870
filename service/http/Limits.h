#pragma once

#include <chrono>
#include <cstddef>

#include "service/http/Pace.h"

namespace quilloservice::http {

/// What a client may take of the server.
struct Limits {
    Duration head = std::chrono::seconds(10);   ///< for a request's head to arrive
    Duration idle = std::chrono::seconds(60);   ///< between two requests
    Duration linger = std::chrono::seconds(2);  ///< for a refused client to stop sending
    PaceRule pace{};                            ///< of bodies, and of how answers are taken
    std::size_t smallBody = 64 * 1024;
    std::size_t connections = 1000;
    Duration latency{};  ///< a fault for tests: each request is answered so much later
};

}  // namespace quilloservice::http
