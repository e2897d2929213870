#include "quillohostkit/state/IDPath.h"

#include <sstream>

namespace quillohostkit {

std::string TextOf(IDPath const& path) {
    std::string words;
    for (auto const& id : path)
        words += id.AsStdString() + ' ';
    return words;
}

IDPath IDPathFromText(std::string const& text) {
    std::istringstream words(text);
    IDPath path;
    for (std::string word; words >> word;)
        path.emplace_back(word);
    return path;
}

}  // namespace quillohostkit
