#include "quillosdk/Transport.h"

#include <mutex>

#include "moxcore/utility/NoDestructor.h"
#include "quillosdk/AnswerReader.h"
#include "quillosdk/CurlTransport.h"

namespace quillosdk {
namespace {

struct Slot {
    std::mutex mutex;
    std::shared_ptr<Transport> replacement;  // guarded by mutex; null: the default
};

/// Never destroyed: requests may still be made while the process ends.
Slot& TheSlot() {
    static moxcore::utility::NoDestructor<Slot> slot;
    return *slot;
}

/// As above; but its thread ends with the process, and with it what is under way.
std::shared_ptr<CurlTransport> const& TheDefault() {
    struct StopAtExit {
        CurlTransport& transport;
        ~StopAtExit() { transport.Stop(); }
    };
    static moxcore::utility::NoDestructor<std::shared_ptr<CurlTransport>> transport(
        std::make_shared<CurlTransport>());
    PrepareToRead();  // answers are read on its thread until that has been stopped
    static StopAtExit const stopAtExit{**transport};
    return *transport;
}

}  // namespace

Transport::~Transport() = default;

std::shared_ptr<Transport> Transport::Get() {
    {
        auto& slot = TheSlot();
        std::lock_guard lock(slot.mutex);
        if (slot.replacement) return slot.replacement;
    }
    return TheDefault();
}

void Transport::Set(std::shared_ptr<Transport> transport) {
    auto& slot = TheSlot();
    std::lock_guard lock(slot.mutex);
    slot.replacement.swap(transport);
}

}  // namespace quillosdk
