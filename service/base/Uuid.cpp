#include "service/base/Uuid.h"

#include "service/base/Digest.h"
#include "service/base/Text.h"

namespace quilloservice {

namespace {

std::string Format(std::string bytes, unsigned char version) {
    bytes[6] = static_cast<char>((static_cast<unsigned char>(bytes[6]) & 0x0F) | version << 4);
    bytes[8] = static_cast<char>((static_cast<unsigned char>(bytes[8]) & 0x3F) | 0x80);
    std::string text = ToHex(std::string_view(bytes).substr(0, 16));
    for (std::size_t dash : {8, 13, 18, 23})
        text.insert(dash, 1, '-');
    return text;
}

}  // namespace

bool IsUuid(std::string_view text) {
    if (text.size() != kNullUuid.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool hex = (text[i] >= '0' && text[i] <= '9') || (text[i] >= 'a' && text[i] <= 'f');
        if (kNullUuid[i] == '-' ? text[i] != '-' : !hex) return false;
    }
    return true;
}

std::string NewUuid() {
    return Format(RandomBytes(16), 4);
}

std::string UuidOf(std::string_view path) {
    return Format(Sha256(path), 8);
}

}  // namespace quilloservice
