#include "quillomoxui/view/Texts.h"

#include "moxcore/string/Conversions.h"
#include "moxcore/string/TimeText.h"

namespace quillomoxui::view {

UTF16String TextWithTime(char const* keyAndDefault, moxcore::threads::TimePoint time) {
    auto text = Text(keyAndDefault);
    auto const place = moxcore::string::AsciiToUTF16("{time}");
    auto const at = text.find(place);
    if (at != UTF16String::npos)
        text.replace(at, place.size(), moxcore::string::FormatTimeOfDay(time));
    return text;
}

}  // namespace quillomoxui::view
