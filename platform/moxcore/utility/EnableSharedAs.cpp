#include "moxcore/utility/EnableSharedAs.h"

namespace moxcore::utility {

EnableSharedAs::~EnableSharedAs() = default;

}  // namespace moxcore::utility
