#include "host/AssetName.h"

namespace quillohost {

std::string DefaultAssetName(std::filesystem::path const& movie) {
    return movie.stem().string();
}

std::string Shorten(std::string const& name, std::size_t bytes) {
    if (name.size() <= bytes) return name;
    auto const continues = [&name](std::size_t position) {
        return (static_cast<unsigned char>(name[position]) & 0xC0) == 0x80;
    };
    while (bytes > 0 && continues(bytes))
        --bytes;
    return name.substr(0, bytes);
}

}  // namespace quillohost
