#include "quillomoxui/model/operations/ReviewLinks.h"

#include "quillomoxui/model/operations/ShareSteps.h"

namespace quillomoxui::model {

using moxcore::utility::Guid;

bool CreateReviewLink(
    Guid const& projectID, UTF16String const& name,
    std::function<void(bool, Guid const&, UTF16String const&)> const& completion) {
    return MakeReviewLink(
        {projectID, name, [completion](StepEnd const& end, Guid const& id, UTF16String const& url) {
             if (end.kind != StepEnd::Kind::CalledOff) completion(end.IsDone(), id, url);
         }});
}

bool AddAssetToLink(Guid const& assetID, Guid const& linkID,
                    std::function<void(bool)> const& completion) {
    return PutOnLink(assetID, linkID,
                     [completion](StepEnd const& end) { completion(end.IsDone()); });
}

}  // namespace quillomoxui::model
