#include "quillomoxui/model/operations/UploadToFolder.h"

#include <cstdint>

#include "moxcore/config/Error.h"
#include "moxcore/string/Conversions.h"
#include "quillomoxui/model/operations/ClientFor.h"
#include "quillomoxui/model/sdk/GuidConversions.h"
#include "quillosdk/QuilloClient.h"

namespace quillomoxui::model {

bool UploadToFolder(UTF16String const& path, moxcore::utility::Guid const& folderID,
                    moxcore::utility::Guid const& versionStackID,
                    std::function<void(double)> const& progress,
                    std::function<void(bool, moxcore::utility::Guid const&)> const& completion) {
    return UploadToFolder(path, folderID, versionStackID, progress, completion, nullptr);
}

bool UploadToFolder(
    UTF16String const& path, moxcore::utility::Guid const& folderID,
    moxcore::utility::Guid const& versionStackID, std::function<void(double)> const& progress,
    std::function<void(bool, moxcore::utility::Guid const&)> const& completion,
    std::function<void(std::optional<moxcore::threads::TimePoint>)> const& waiting) {
    auto const client = ClientFor(quillocommon::Step::Upload);
    if (!client) return false;

    quillosdk::UploadRequest request(
        ToServiceGuid(folderID), moxcore::string::UTF16toStdString(path),
        [progress](std::uint64_t done, std::uint64_t total) {
            progress(static_cast<double>(done) / static_cast<double>(total));
        });
    request.SetAutoversionId(ToServiceGuid(versionStackID));
    request.SetWaitListener(waiting);
    quillocommon::Guid uploadID;
    using Answer = moxcore::async::Future<std::shared_ptr<quillosdk::UploadResponse>>;
    static_cast<void>(
        client->GetTransferManager()
            .Upload(request, uploadID)
            .Then([completion](Answer const& answer) {
                if (moxcore::config::ExtractResultFromException(answer.GetException()) < 0)
                    return completion(false, {});
                auto const response = answer.Get();
                auto const asset = response->GetAssetObject();
                if (!response->IsSuccessful() || !asset.id) return completion(false, {});
                completion(true, FromServiceGuid(*asset.id));
            }));
    return true;
}

}  // namespace quillomoxui::model
