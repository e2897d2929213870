#pragma once

#include <cstdint>

namespace quillocommon {

/// The outcome of a synchronous operation of the service's libraries: a 32-bit result, negative
/// for failure.
class [[nodiscard]] Response {
public:
    Response() = default;
    explicit Response(std::int32_t result) : result(result) {}

    [[nodiscard]] bool IsSuccess() const { return result >= 0; }
    [[nodiscard]] std::int32_t GetResult() const { return result; }

private:
    std::int32_t result = 0;
};

}  // namespace quillocommon
