#pragma once

#include "moxcore/string/UTF16String.h"

namespace quillomoxui {

/// Every name, path and text of the model and the views.
using moxcore::string::UTF16String;

}  // namespace quillomoxui
