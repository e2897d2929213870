#pragma once

#include <string_view>

namespace quilloservice {

/// Receives a request's body in pieces, for bodies too large for memory. A function that throws
/// ApiError ends the request with that error; then only the destructor is called. One thread at a
/// time, not always the same; may wait for the disk.
class BodySink {
public:
    virtual ~BodySink() = default;

    /// Called before the first piece, when the headers have been checked.
    virtual void Open() = 0;
    virtual void Take(std::string_view piece) = 0;

    /// Fills in the response. `complete`: whether the whole body has arrived; if not, the client
    /// has probably disconnected.
    virtual void Finish(bool complete) = 0;
};

}  // namespace quilloservice
