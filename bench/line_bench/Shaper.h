#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace linebench {

/// What a line between a client and a service is like.
struct Line {
    std::uint64_t bytesPerSecond = 0;  ///< of all connections, to the service; 0: no limit
    std::chrono::milliseconds oneWay{0};
    std::uint64_t connectionBytesPerSecond = 0;  ///< of each connection; 0: no limit
    double stallsPerMib = 0;  ///< how likely a connection stands still at each MiB, from 0 to 1
    std::chrono::milliseconds stall{2000};
};

/// A proxy on the loopback interface that passes bytes on as a line would: each as late as the line
/// is long, and to the service no faster than it allows. A connection's first bytes wait for one
/// round trip, as for a handshake. Slow start and lost packets are not modelled. It runs on a
/// thread of its own until it is destroyed.
class Shaper {
public:
    /// `service` is an address as http://127.0.0.1:PORT.
    Shaper(std::string const& service, Line const& line);
    ~Shaper();
    Shaper(Shaper const&) = delete;
    Shaper& operator=(Shaper const&) = delete;

    /// Where clients go instead of the service.
    [[nodiscard]] std::string Address() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace linebench
