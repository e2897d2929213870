#pragma once

#include <exception>

#include "moxcore/Export.h"

namespace moxcore::async {

/// What Get of a cancelled future throws. A cancellation is no failure: its result is 0.
class MOXCORE_API CancelledException : public std::exception {
public:
    ~CancelledException() override;
    [[nodiscard]] char const* what() const noexcept override;
};

}  // namespace moxcore::async
