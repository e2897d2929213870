#include "quilloclient/QuilloDatastore.h"

#include <mutex>

#include "moxcore/utility/NoDestructor.h"
#include "quilloclient/ServiceDatastore.h"

namespace quillo {
namespace {

struct Slot {
    std::mutex mutex;
    std::shared_ptr<QuilloDatastore> datastore;  // guarded by mutex; null: not asked for yet
};

/// Never destroyed: lists are still asked for while the process ends.
Slot& TheSlot() {
    static moxcore::utility::NoDestructor<Slot> slot;
    return *slot;
}

}  // namespace

QuilloUser::~QuilloUser() = default;
QuilloAccount::~QuilloAccount() = default;
QuilloTeam::~QuilloTeam() = default;
QuilloProject::~QuilloProject() = default;
QuilloAsset::~QuilloAsset() = default;
QuilloDatastore::~QuilloDatastore() = default;

std::shared_ptr<QuilloDatastore> QuilloDatastore::GetDatastore(ImmutableString const& id) {
    if (!id.IsNull()) return nullptr;
    auto& slot = TheSlot();
    std::lock_guard lock(slot.mutex);
    if (!slot.datastore) slot.datastore = ServiceDatastore::Create();
    return slot.datastore;
}

void QuilloDatastore::SetDatastore(std::shared_ptr<QuilloDatastore> datastore) {
    auto& slot = TheSlot();
    std::lock_guard lock(slot.mutex);
    slot.datastore.swap(datastore);
}

}  // namespace quillo
