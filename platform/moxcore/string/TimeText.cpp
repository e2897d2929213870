#include "moxcore/string/TimeText.h"

#include <unicode/datefmt.h>
#include <unicode/locid.h>

#include <cstdlib>
#include <memory>

namespace moxcore::string {
namespace {

/// ICU takes its default from the language of the texts; that of times may be another one.
icu::Locale TimeLocale() {
    for (char const* const variable : {"LC_ALL", "LC_TIME", "LANG"})
        // NOLINTNEXTLINE(concurrency-mt-unsafe)
        if (char const* const name = std::getenv(variable); name && *name != '\0')
            return icu::Locale::createCanonical(name);
    return icu::Locale::getRoot();
}

}  // namespace

UTF16String FormatTimeOfDay(threads::TimePoint time) {
    std::unique_ptr<icu::DateFormat> const format(
        icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, TimeLocale()));
    if (!format) return {};  // ICU is without its data
    icu::UnicodeString text;
    format->format(std::chrono::duration<double, std::milli>(time.time_since_epoch()).count(),
                   text);
    UTF16String result;
    for (int i = 0; i < text.length(); ++i)
        result.push_back(text.charAt(i));
    return result;
}

}  // namespace moxcore::string
