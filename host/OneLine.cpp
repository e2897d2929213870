#include "host/OneLine.h"

#include <algorithm>

namespace quillohost {

std::string OneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
    return text;
}

}  // namespace quillohost
