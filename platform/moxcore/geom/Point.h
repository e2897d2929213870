#pragma once

namespace moxcore::geom {

/// A point; also a size, with x the width and y the height.
template <class T>
struct PointT {
    T x{};
    T y{};

    friend bool operator==(PointT const&, PointT const&) = default;
};

}  // namespace moxcore::geom
