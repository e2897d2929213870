#pragma once

#include <cstdint>
#include <span>

namespace quillosdk {

/// A request's body that is read while it is sent, so that none of it need be kept in memory. The
/// transport's thread reads it: what takes long holds up every other request.
class BodySource {
public:
    virtual ~BodySource() = default;

    [[nodiscard]] virtual std::uint64_t Size() const = 0;

    /// Fills `bytes` with what stands at `offset`; it does not reach beyond the end. What it throws
    /// fails the request.
    virtual void Read(std::uint64_t offset, std::span<char> bytes) const = 0;
};

}  // namespace quillosdk
