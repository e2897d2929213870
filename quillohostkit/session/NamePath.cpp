#include "quillohostkit/session/NamePath.h"

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/Failure.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

constexpr char kSeparator = '/';
constexpr char kEscape = '\\';

bool NeedsEscape(char c) {
    return c == kSeparator || c == kEscape;
}

[[noreturn]] void Refuse(std::string_view text, char const* keyAndDefault) {
    throw Failure(FailureKind::Usage, Text(keyAndDefault, {{"path", std::string(text)}}));
}

}  // namespace

NamePath SplitNamePath(std::string_view text) {
    NamePath path(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == kSeparator) {
            path.emplace_back();
            continue;
        }
        if (text[i] == kEscape && (++i == text.size() || !NeedsEscape(text[i])))
            Refuse(text,
                   "$$$/Vistrel/quillohostkit/Path/Escape=--to \"{path}\" has a \"\\\" that stands "
                   "before neither \"/\" nor \"\\\"; write \"\\\\\" for one");
        path.back() += text[i];
    }
    for (auto const& name : path)
        if (name.empty())
            Refuse(text,
                   "$$$/Vistrel/quillohostkit/Path/EmptyName=--to \"{path}\" has an empty name; "
                   "write Account/Workspace/Project/Folder");
    return path;
}

std::string JoinNamePath(NamePath const& path) {
    std::string text;
    for (auto const& name : path) {
        if (!text.empty()) text += kSeparator;
        for (char c : name) {
            if (NeedsEscape(c)) text += kEscape;
            text += c;
        }
    }
    return text;
}

}  // namespace quillohostkit
