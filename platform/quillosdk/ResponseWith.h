#pragma once

#include <utility>

#include "quillosdk/QuilloResponse.h"

namespace quillosdk {

/// An answer with one content, empty unless the answer is successful. The concrete responses give
/// it its name.
template <class Content>
class ResponseWith : public QuilloResponse {
public:
    ResponseWith(int status, Headers headers, Content content)
        : QuilloResponse(status, std::move(headers)), content(std::move(content)) {}

protected:
    Content content;
};

}  // namespace quillosdk
