#include "quillomoxui/model/client/DatastoreListener.h"

#include <utility>

#include "moxcore/messaging/Station.h"
#include "quilloclient/QuilloDatastore.h"

namespace quillomoxui::model {

QuilloClientIntegration::DatastoreListener::~DatastoreListener() {
    StopListening();
}

void QuilloClientIntegration::DatastoreListener::ListenToMessage(
    moxcore::messaging::Message const&) {}

void QuilloClientIntegration::DatastoreListener::BeginListening() {
    if (!stationID.IsNull()) return;
    stationID = quillo::QuilloDatastore::GetDatastore({})->GetStationID();
    moxcore::messaging::AddRawListener(stationID, this);
}

void QuilloClientIntegration::DatastoreListener::StopListening() {
    if (stationID.IsNull()) return;
    moxcore::messaging::RemoveRawListener(std::exchange(stationID, {}), this);
}

}  // namespace quillomoxui::model
