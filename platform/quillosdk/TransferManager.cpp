#include "quillosdk/TransferManager.h"

#include <utility>

#include "quillosdk/Session.h"
#include "quillosdk/TusUpload.h"

namespace quillosdk {

TransferManager::TransferManager(std::shared_ptr<Session> session) : session(std::move(session)) {}

moxcore::async::Future<std::shared_ptr<UploadResponse>> TransferManager::Upload(
    UploadRequest const& request, quillocommon::Guid& uploadID) {
    uploadID = quillocommon::Guid::CreateUnique();
    return std::make_shared<TusUpload>(session, request, uploadID.AsString())->Start();
}

}  // namespace quillosdk
