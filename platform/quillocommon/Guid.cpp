#include "quillocommon/Guid.h"

namespace quillocommon {

Guid Guid::CreateUnique() {
    Guid guid;
    guid.bytes = moxcore::utility::Guid::CreateUnique();
    return guid;
}

}  // namespace quillocommon
