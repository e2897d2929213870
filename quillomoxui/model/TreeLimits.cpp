#include "quillomoxui/model/TreeLimits.h"

#include <algorithm>

#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "quillocommon/Failures.h"
#include "quillomoxui/model/NodePath.h"
#include "quillomoxui/model/QuilloFolder.h"

namespace quillomoxui::model {
namespace {

constexpr std::size_t kLongestName = 1000;
constexpr std::size_t kMostLevels = 256;

}  // namespace

UTF16String NameForTree(std::string const& utf8) {
    return moxcore::string::Shorten(moxcore::string::UTF8to16(utf8), kLongestName);
}

FolderFilter::FolderFilter(QuilloNode& parent) {
    auto const path = WithAncestors(parent.Share(&parent));
    isAtTheEnd = path.size() >= kMostLevels;
    for (auto const& node : path)
        if (node->GetKind() == NodeKind::Folder) foldersAbove.push_back(node->GetID());
}

bool FolderFilter::Admits(moxcore::utility::Guid const& id) {
    auto const isAbove = [&] {
        return !id.IsNull() &&
               std::find(foldersAbove.begin(), foldersAbove.end(), id) != foldersAbove.end();
    };
    if (!isAtTheEnd && !isAbove()) return true;
    if (leftOut++ == 0) firstLeftOut = id;
    return false;
}

void FolderFilter::Report() const {
    if (leftOut == 0) return;
    auto const which =
        leftOut == 1 ? std::string("A folder") : std::to_string(leftOut) + " folders of one list";
    auto const why = isAtTheEnd ? " more than " + std::to_string(kMostLevels) + " levels deep"
                                : std::string(" that lead back to themselves");
    quillocommon::ReportFailure(
        {quillocommon::Step::ListLocations, moxcore::config::kUnknownFailure, 0,
         which + why + " cannot be shown (" + firstLeftOut.AsStdString() +
             (leftOut == 1 ? "" : " and others") + "); have the places mended in the service."});
}

}  // namespace quillomoxui::model
