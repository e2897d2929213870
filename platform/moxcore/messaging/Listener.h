#pragma once

#include "moxcore/Export.h"
#include "moxcore/messaging/Message.h"

namespace moxcore::messaging {

/// Hears the messages of the stations to which it has been added.
class MOXCORE_API Listener {
public:
    virtual ~Listener();

    /// Called on the thread that posts; calls to one listener from several threads come one after
    /// the other. What it throws is traced (category "moxcore") and goes no further.
    virtual void ListenToMessage(Message const& message) = 0;
};

}  // namespace moxcore::messaging
