#pragma once

#include "moxcore/Export.h"
#include "moxcore/messaging/Listener.h"
#include "moxcore/messaging/Message.h"
#include "moxcore/utility/ImmutableString.h"

namespace moxcore::messaging {

// A station is a name under which messages are posted; it exists for as long as somebody listens.
// Any thread.

/// Delivers what is posted to the station to `listener` from now on. It is not kept alive: remove
/// it before its destructor begins. Added twice, it receives everything twice.
MOXCORE_API void AddRawListener(utility::ImmutableString const& stationID, Listener* listener);

/// Ends that, once for each time that it was added. Waits for a call under way on another thread,
/// so that none comes after it; within the listener's own call it does not wait. Nothing happens
/// when it does not listen.
MOXCORE_API void RemoveRawListener(utility::ImmutableString const& stationID, Listener* listener);

/// Tells everybody who listens to the station, before it returns.
MOXCORE_API void PostMessageToStation(utility::ImmutableString const& stationID,
                                      Message const& message);

}  // namespace moxcore::messaging
