#include "host/state/AssetName.h"

namespace quillohost {

std::string DefaultAssetName(std::filesystem::path const& movie) {
    return movie.stem().string();
}

}  // namespace quillohost
