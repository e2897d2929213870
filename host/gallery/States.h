#pragma once

#include <array>

#include "host/gallery/Specimen.h"

namespace quillogallery {

enum class State { Normal, Hovered, Pressed, Focused, Disabled, Checked };

inline constexpr std::array kStates{State::Normal,  State::Hovered,  State::Pressed,
                                    State::Focused, State::Disabled, State::Checked};

[[nodiscard]] char const* NameOf(State state);

/// Whether controls like `specimen` have `state`.
[[nodiscard]] bool Has(Specimen const& specimen, State state);

/// Brings `view`, which is to be seen in the active window, into `state`, by the same events as a
/// user's doing. The focus is in one place at a time: it stays where it was given last.
void BringInto(State state, Specimen const& specimen, moxui::controls::UI_ControlView& view);

}  // namespace quillogallery
