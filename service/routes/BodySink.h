#pragma once

#include <string_view>

namespace quilloservice {

/// Takes a request's body in pieces, for bodies that are too large to be held. Each function may
/// throw ApiError, which is the answer; after that only the destructor is called. One thread at a
/// time, not always the same; may wait for the disk.
class BodySink {
public:
    virtual ~BodySink() = default;

    /// Before the first piece. The head is checked; the client may not have sent any body yet.
    virtual void Open() = 0;
    virtual void Take(std::string_view piece) = 0;

    /// Fills in the answer. `complete`: whether the body came to its end. Where it did not the
    /// client has gone, most likely.
    virtual void Finish(bool complete) = 0;
};

}  // namespace quilloservice
