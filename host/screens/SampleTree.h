#pragma once

#include <memory>

#include "quillomoxui/model/QuilloFolder.h"
#include "quillomoxui/model/QuilloUser.h"

namespace quilloscreens {

/// A small tree of locations, as a service would have sent it.
struct SampleTree {
    SampleTree();

    std::shared_ptr<quillomoxui::QuilloUser> user;
    std::shared_ptr<quillomoxui::QuilloFolder> folder;  ///< one of its folders, two levels deep
};

}  // namespace quilloscreens
