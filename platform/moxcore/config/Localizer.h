#pragma once

#include <string>
#include <string_view>

#include "moxcore/Export.h"
#include "moxcore/string/UTF16String.h"

namespace moxcore::config {

/// Looks up the texts that users see. A localizable text is one string, "key=default text". Any
/// thread.
class MOXCORE_API Localizer {
public:
    /// The text for the locale in force, or the default where the locale has none. A string without
    /// "=" is its own text.
    [[nodiscard]] static string::UTF16String Localize(std::string_view keyAndDefault);

    /// Takes the texts of `locale` ("de", "ja", ...) from `<directory>/<locale>.json`, one object
    /// of key to text, in place of those before. A file that is unreadable or not such an object
    /// (traced, category "moxcore"), or what is no locale's name, puts the defaults in force and
    /// answers false.
    static bool Load(std::string const& directory, std::string const& locale);
};

}  // namespace moxcore::config
