#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "moxui/Export.h"
#include "moxui/drawbot/ImageInterface.h"

namespace moxui::utility {

/// Finds pictures by name. Main thread.
class MOXUI_API ResourceManager {
public:
    virtual ~ResourceManager();

    /// The picture `name` in the colours of the theme in force, or null when there is none of that
    /// name (traced once). Asking again gives the same one.
    [[nodiscard]] virtual boost::intrusive_ptr<drawbot::ImageInterface> GetImage(
        std::string const& name) = 0;
};

/// One file of a bundle; both texts outlive it.
struct BundleFile {
    std::string_view name;      // without folder and ending: "S_Copy_16"
    std::string_view contents;  // an SVG document
};

/// The pictures that a program or library carries inside itself.
struct Bundle {
    BundleFile const* files;
    std::size_t count;
};

/// Finds the pictures of a bundle. A picture is an SVG document; what it draws in "currentColor" is
/// drawn in the theme's colour for icons.
class MOXUI_API OS_ResourceManager : public ResourceManager {
public:
    /// The data that `bundle` refers to must outlive the manager.
    explicit OS_ResourceManager(Bundle const& bundle);
    ~OS_ResourceManager() override;

    [[nodiscard]] boost::intrusive_ptr<drawbot::ImageInterface> GetImage(
        std::string const& name) override;

private:
    Bundle bundle;
    std::map<std::string, boost::intrusive_ptr<drawbot::ImageInterface>> images;
};

/// The toolkit's own pictures.
[[nodiscard]] MOXUI_API ResourceManager& GetResourceManager();

}  // namespace moxui::utility
