#pragma once

#include <concepts>
#include <functional>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "service/base/Uuid.h"

namespace quilloservice {

/// Base of the tags of IDs that are UUIDs in lower case. The nil UUID stands for no object.
struct UuidForm {
    static constexpr std::string_view kNil = kNullUuid;
    static bool IsValid(std::string_view text) { return IsUuid(text); }
};

/// The identifier of one kind of object. IDs of different kinds are different types, so that one
/// cannot be passed for another. `Tag::IsValid` decides which texts are IDs; an Id never holds any
/// other text. If a tag derives from another (a folder is a node), its IDs convert implicitly to
/// the general type; the conversion back is explicit, for code that has checked the kind.
template <typename Tag>
class Id {
public:
    /// The nil ID.
    Id() requires requires { Tag::kNil; } : text(Tag::kNil) {
    }

    /// For text that is known to be an ID, such as the store's. Throws std::invalid_argument if it
    /// is not.
    explicit Id(std::string idText) : text(std::move(idText)) {
        if (!Tag::IsValid(text)) throw std::invalid_argument("malformed ID");
    }

    template <typename Other>
    requires(std::derived_from<Other, Tag> && !std::same_as<Other, Tag>)
        Id(Id<Other> const& special)
        : text(special.GetText()) {}

    template <typename Other>
    requires(std::derived_from<Tag, Other> &&
             !std::same_as<Other, Tag>) explicit Id(Id<Other> const& general)
        : Id(general.GetText()) {}

    /// Reads an ID that a client sent; nothing if it is malformed.
    static std::optional<Id> Parse(std::string_view text) {
        if (!Tag::IsValid(text)) return std::nullopt;
        return Id(std::string(text));
    }

    /// Reads an ID that a client sent, for requests that treat a malformed ID like an unknown one:
    /// returns the nil ID for it, which no object has.
    static Id ParseOrNil(std::string_view text) { return Parse(text).value_or(Id()); }

    [[nodiscard]] bool IsNil() const { return text == Tag::kNil; }

    /// For statements, addresses, HTML and log lines.
    [[nodiscard]] std::string const& GetText() const { return text; }

    friend bool operator==(Id const&, Id const&) = default;
    friend auto operator<=>(Id const&, Id const&) = default;

    friend std::ostream& operator<<(std::ostream& stream, Id const& id) {
        return stream << id.text;
    }

    /// Conversion for nlohmann::json.
    template <typename Json>
    friend void to_json(Json& json, Id const& id) {
        json = id.text;
    }

private:
    std::string text;
};

}  // namespace quilloservice

template <typename Tag>
struct std::hash<quilloservice::Id<Tag>> {
    std::size_t operator()(quilloservice::Id<Tag> const& id) const {
        return std::hash<std::string>()(id.GetText());
    }
};
