#include "quillohostkit/state/AssetName.h"

namespace quillohostkit {

std::string DefaultAssetName(std::filesystem::path const& movie) {
    return movie.stem().string();
}

}  // namespace quillohostkit
