#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "moxcore/Export.h"
#include "moxcore/string/UTF16String.h"

namespace moxcore::config {

/// What takes the place of each "{name}" in a text: names and values, in UTF-8.
using TextValues = std::vector<std::pair<std::string_view, std::string>>;

/// Looks up the texts that users see. A localizable text is one string, "key=default text". Any
/// thread.
///
/// A table of texts is a file `<locale>.json`: one object of key to text, or to a list of the
/// text's lines. The tables that are installed with the libraries, in folders of
/// `share/quillomoxui/strings`, are found from where this library lies. They are read at the first
/// text that is asked for, in the language of the environment at that time (LANGUAGE, else LC_ALL,
/// LC_MESSAGES or LANG): "de_AT.UTF-8" takes `de_AT.json`, or else `de.json`. For English, "C",
/// "POSIX" and a language without a table the defaults are in force.
///
/// A table that cannot be read, or is not such an object, is left out and traced (category
/// "moxcore").
class MOXCORE_API Localizer {
public:
    /// The text for the locale in force, or the default where the locale has none. A string without
    /// "=" is its own text.
    [[nodiscard]] static string::UTF16String Localize(std::string_view keyAndDefault);

    /// Adds a host's tables for the locale in force: `<directory>/<locale>.json` and those in the
    /// folders of `directory`. Their texts come before those that were there. Views that are shown
    /// already stay as they are.
    static void AddDirectory(std::string const& directory);

    /// Takes the texts of `locale` ("de", "ja", ...) from `<directory>/<locale>.json` and from the
    /// folders of `directory`, in place of all others, whatever the environment says. When there
    /// are none, when one of the tables is left out, or when `locale` is no locale's name, the
    /// defaults are in force, and the answer is false.
    static bool Load(std::string const& directory, std::string const& locale);

    /// The locale whose tables are in force ("de"); empty for the defaults.
    [[nodiscard]] static std::string LocaleInForce();
};

/// The same as Localize, in UTF-8, with `values` filled in. A "{name}" without a value stays. Any
/// thread.
[[nodiscard]] MOXCORE_API std::string Text(std::string_view keyAndDefault,
                                           TextValues const& values = {});

}  // namespace moxcore::config
