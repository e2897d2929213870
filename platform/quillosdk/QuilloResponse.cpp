#include "quillosdk/QuilloResponse.h"

namespace quillosdk {

QuilloResponse::~QuilloResponse() = default;

}  // namespace quillosdk
