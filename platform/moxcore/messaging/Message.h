#pragma once

#include <cstdint>
#include <string_view>

#include "moxcore/Export.h"
#include "moxcore/utility/Guid.h"

namespace moxcore::messaging {

/// The kind of a message.
using MessageID = std::uint64_t;

/// The ID of the message type with this name, the same in every process. Any thread.
[[nodiscard]] MOXCORE_API MessageID HashMessageTypeNameToMessageID(std::string_view name) noexcept;

/// Something that has happened to one thing. A plain value; any thread.
class Message {
public:
    /// `subject` is what it happened to, the null Guid where there is only one such thing.
    explicit Message(MessageID typeID, utility::Guid const& subject = {})
        : typeID(typeID), subject(subject) {}

    [[nodiscard]] MessageID GetTypeID() const noexcept { return typeID; }
    [[nodiscard]] utility::Guid const& GetGuid() const noexcept { return subject; }

private:
    MessageID typeID;
    utility::Guid subject;
};

}  // namespace moxcore::messaging
