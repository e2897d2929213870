#include "moxcore/debug/DebugDatabase.h"

#include "moxcore/utility/NoDestructor.h"

namespace moxcore::debug {

DebugDatabase& DebugDatabase::Instance() {
    // Never destroyed: switches are still asked for while the process ends.
    static moxcore::utility::NoDestructor<DebugDatabase> instance;
    return *instance;
}

void DebugDatabase::SetEntry(std::string const& key, Value const& value) {
    std::lock_guard lock(mutex);
    entries.insert_or_assign(key, value);
}

void DebugDatabase::RemoveEntry(std::string const& key) {
    std::lock_guard lock(mutex);
    entries.erase(key);
}

}  // namespace moxcore::debug
