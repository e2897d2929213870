#pragma once

#include <algorithm>
#include <cmath>

#include "moxui/drawbot/ColorRGBA.h"

namespace testsupport {

/// The contrast of two opaque colours, from 1 to 21, as accessibility guidelines define it.
inline double Contrast(moxui::drawbot::ColorRGBA const& a, moxui::drawbot::ColorRGBA const& b) {
    auto const luminance = [](moxui::drawbot::ColorRGBA const& color) {
        auto const linear = [](double c) {
            return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) +
               0.0722 * linear(color.blue);
    };
    double const first = luminance(a) + 0.05;
    double const second = luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

}  // namespace testsupport
