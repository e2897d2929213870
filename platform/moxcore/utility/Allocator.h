#pragma once

#include <memory>

namespace moxcore::utility {

/// The allocator of the core library's containers. An alias, so that a container of the core
/// library and one of the standard library are the same type.
template <class T>
using Allocator = std::allocator<T>;

}  // namespace moxcore::utility
