#pragma once

namespace moxui::ui {

/// What a screen reader calls a view that no ready-made control stands for.
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
