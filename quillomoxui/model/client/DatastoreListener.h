#pragma once

#include "moxcore/messaging/Listener.h"
#include "moxcore/utility/ImmutableString.h"
#include "quillomoxui/model/client/QuilloClientIntegration.h"

namespace quillomoxui::model {

/// Receives the datastore's messages from its first BeginListening on. Messages come on the
/// datastore's executor, and an object of a derived class must receive none once its destructor
/// has begun: its owner calls StopListening first. BeginListening and StopListening by one
/// thread at a time.
class QuilloClientIntegration::DatastoreListener : public moxcore::messaging::Listener {
public:
    ~DatastoreListener() override;

    /// Does nothing.
    void ListenToMessage(moxcore::messaging::Message const& message) override;

    /// Nothing happens when it listens already.
    void BeginListening();

    /// Waits for a call of ListenToMessage on another thread to end. Nothing happens when it does
    /// not listen.
    void StopListening();

private:
    moxcore::utility::ImmutableString stationID;  // null: does not listen
};

}  // namespace quillomoxui::model
