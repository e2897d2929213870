#pragma once

namespace moxui::drawbot {

/// A colour; each component from 0 to 1, not premultiplied.
struct ColorRGBA {
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 0;

    friend bool operator==(ColorRGBA const&, ColorRGBA const&) = default;
};

}  // namespace moxui::drawbot
