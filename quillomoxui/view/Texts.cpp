#include "quillomoxui/view/Texts.h"

#include "moxcore/string/Conversions.h"
#include "moxcore/string/TimeText.h"

namespace quillomoxui::view {

UTF16String TextWithTime(char const* keyAndDefault, moxcore::threads::TimePoint time) {
    using namespace moxcore::string;
    return UTF8to16(
        moxcore::config::Text(keyAndDefault, {{"time", UTF16to8(FormatTimeOfDay(time))}}));
}

}  // namespace quillomoxui::view
