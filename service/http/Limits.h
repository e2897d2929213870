#pragma once

#include <chrono>
#include <cstddef>

#include "service/http/Pace.h"

namespace quilloservice::http {

/// Limits for clients.
struct Limits {
    Duration head = std::chrono::seconds(10);   ///< for receiving a request's head
    Duration idle = std::chrono::seconds(60);   ///< between two requests
    Duration linger = std::chrono::seconds(2);  ///< for a refused client to stop sending
    PaceRule pace{};                            ///< for receiving bodies and sending responses
    std::size_t smallBody = 64 * 1024;
    std::size_t connections = 1000;
    bool beginMayWait = false;  ///< Application::Begin may wait for another machine
    Duration latency{};         ///< a simulated fault: the delay of every response
};

}  // namespace quilloservice::http
