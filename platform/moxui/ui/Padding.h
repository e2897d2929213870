#pragma once

namespace moxui::ui {

/// The room between a view's edge and what it holds, side by side.
template <class T>
struct PaddingT {
    T top{};
    T left{};
    T bottom{};
    T right{};

    friend bool operator==(PaddingT const&, PaddingT const&) = default;
};

}  // namespace moxui::ui
