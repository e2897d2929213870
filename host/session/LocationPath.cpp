#include "host/session/LocationPath.h"

#include "host/process/Failure.h"

namespace quillohost {
namespace {

constexpr char kSeparator = '/';
constexpr char kEscape = '\\';

bool NeedsEscape(char c) {
    return c == kSeparator || c == kEscape;
}

[[noreturn]] void Refuse(std::string_view path, std::string const& reason) {
    throw Failure(ExitCode::Usage, "--to \"" + std::string(path) + "\" " + reason);
}

}  // namespace

std::vector<std::string> SplitLocationPath(std::string_view path) {
    std::vector<std::string> names(1);
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] == kSeparator) {
            names.emplace_back();
            continue;
        }
        if (path[i] == kEscape && (++i == path.size() || !NeedsEscape(path[i])))
            Refuse(path, R"(has a "\" that stands before neither "/" nor "\"; write "\\" for one)");
        names.back() += path[i];
    }
    for (auto const& name : names)
        if (name.empty()) Refuse(path, "has an empty name; write Account/Workspace/Project/Folder");
    return names;
}

std::string JoinLocationPath(std::vector<std::string> const& names) {
    std::string path;
    for (auto const& name : names) {
        if (!path.empty()) path += kSeparator;
        for (char c : name) {
            if (NeedsEscape(c)) path += kEscape;
            path += c;
        }
    }
    return path;
}

}  // namespace quillohost
