#include "moxcore/messaging/Message.h"

namespace moxcore::messaging {

MessageID HashMessageTypeNameToMessageID(std::string_view name) noexcept {
    // 64-bit FNV-1a: no two of a program's few dozen names meet by accident.
    MessageID hash = 0xCBF29CE484222325;
    for (unsigned char const byte : name)
        hash = (hash ^ byte) * 0x100000001B3;
    return hash;
}

}  // namespace moxcore::messaging
