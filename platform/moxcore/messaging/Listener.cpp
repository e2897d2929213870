#include "moxcore/messaging/Listener.h"

namespace moxcore::messaging {

Listener::~Listener() = default;

}  // namespace moxcore::messaging
