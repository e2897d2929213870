#pragma once

#include <string>
#include <utility>
#include <vector>

#include "moxui/Export.h"
#include "moxui/skins/ThemeProvider.h"

namespace moxui::skins {

/// Base of what is drawn in the theme's colours. Main thread.
class MOXUI_API ThemeClient {
public:
    /// The colour of `key` (ThemeColor): this client's own, when it was given one and the
    /// theme allows for it (HighContrast does not), or the theme's.
    [[nodiscard]] drawbot::ColorRGBA GetColor(int key) const;
    /// Gives this client a colour of its own in place of the theme's.
    void SetCustomThemeColor(int key, drawbot::ColorRGBA const& color);

    [[nodiscard]] ThemeProvider const& GetThemeProvider() const { return ThemeProvider::Get(); }
    [[nodiscard]] std::string GetFontName(int index) const;
    [[nodiscard]] float GetFontSize(int index) const;

protected:
    ThemeClient() = default;
    virtual ~ThemeClient();

    /// A colour of this client's own has changed.
    virtual void OnCustomThemeColorChanged();

private:
    std::vector<std::pair<int, drawbot::ColorRGBA>> ownColors;
};

}  // namespace moxui::skins
