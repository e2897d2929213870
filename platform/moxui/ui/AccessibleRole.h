#pragma once

namespace moxui::ui {

/// The accessible role of a view that is not a ready-made control.
enum class AccessibleRole {
    Group,
    Link,
    Button,
    ListItem,
    Image,       // passed over while it has no name
    Decoration,  // always passed over
    Alert,       // a short notice that comes by itself
};

}  // namespace moxui::ui
