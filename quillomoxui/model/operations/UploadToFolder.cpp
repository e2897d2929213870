#include "quillomoxui/model/operations/UploadToFolder.h"

#include "quillomoxui/model/operations/ShareSteps.h"

namespace quillomoxui::model {

bool UploadToFolder(UTF16String const& path, moxcore::utility::Guid const& folderID,
                    moxcore::utility::Guid const& versionStackID,
                    std::function<void(double)> const& progress,
                    std::function<void(bool, moxcore::utility::Guid const&)> const& completion) {
    return UploadMovie(
        {.path = path,
         .folderID = folderID,
         .versionStackID = versionStackID,
         .progress = progress,
         .completion = [completion](StepEnd const& end, moxcore::utility::Guid const& assetID) {
             if (end.kind != StepEnd::Kind::CalledOff) completion(end.IsDone(), assetID);
         }});
}

}  // namespace quillomoxui::model
