#include "quillosdk/AnswerReader.h"

#include <simdjson.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "moxcore/config/Error.h"
#include "quillocommon/Saturating.h"
#include "quillosdk/Redact.h"
#include "quillosdk/Transport.h"

namespace quillosdk {
namespace {

using simdjson::ondemand::object;
using simdjson::ondemand::value;

/// The reason why an answer is unreadable. Collects its place on the way out: "projects[3].name".
class Malformed : public std::exception {
public:
    explicit Malformed(std::string problem) : problem(std::move(problem)) {}

    [[nodiscard]] Malformed Within(std::string const& outer) const {
        Malformed result = *this;
        result.place = place.empty()            ? outer
                       : place.starts_with('[') ? outer + place
                                                : outer + "." + place;
        return result;
    }

    [[nodiscard]] std::string Text() const {
        return place.empty() ? problem : place + " " + problem;
    }
    [[nodiscard]] char const* what() const noexcept override { return problem.c_str(); }

private:
    std::string problem;
    std::string place;
};

std::string_view AsText(value& from) {
    std::string_view text;
    auto const error = from.get_string().get(text);
    if (error == simdjson::INCORRECT_TYPE) throw Malformed("is no text");
    if (error) throw simdjson::simdjson_error(error);
    return text;
}

quillocommon::Guid AsGuid(value& from) {
    quillocommon::Guid const guid(AsText(from));
    if (guid.IsNull()) throw Malformed("is no identifier");
    return guid;
}

/// One beyond the type's end becomes that end.
std::int64_t AsNumber(value& from) {
    std::string_view digits = from.raw_json_token();
    digits = digits.substr(0, digits.find_last_not_of(" \t\r\n") + 1);
    auto const number = quillocommon::ReadCount(digits);
    if (!number) throw Malformed("is no whole number");
    return static_cast<std::int64_t>(
        std::min<std::uint64_t>(*number, std::numeric_limits<std::int64_t>::max()));
}

object AsObject(value& from) {
    object result;
    auto const error = from.get_object().get(result);
    if (error == simdjson::INCORRECT_TYPE) throw Malformed("is no object");
    if (error) throw simdjson::simdjson_error(error);
    return result;
}

/// The name of a member; only one with an escape in it needs the parser's buffer.
std::string_view NameOf(simdjson::ondemand::field& field) {
    char const* const begin = field.key().raw();
    char const* end = begin;
    while (*end != '"' && *end != '\\')
        ++end;
    if (*end == '\\') return field.unescaped_key();
    return {begin, static_cast<std::size_t>(end - begin)};
}

/// Hands each member of `from` to `onMember`, with its name.
template <class OnMember>
void ForEachMember(object from, OnMember onMember) {
    for (auto each : from) {
        simdjson::ondemand::field field;
        if (auto const error = std::move(each).get(field)) throw simdjson::simdjson_error(error);
        std::string_view const name = NameOf(field);
        value member = field.value();
        try {
            onMember(name, member);
        } catch (Malformed const& malformed) {
            throw malformed.Within(std::string(name));
        }
    }
}

void Require(bool present, char const* name) {
    if (!present) throw Malformed(std::string("has no ") + name);
}

/// Reads a record that consists of an ID and a name, and what `onOther` makes of other members.
template <class Record, class OnOther>
Record ReadNamed(value& from, OnOther onOther) {
    Record record;
    bool hasID = false;
    bool hasName = false;
    ForEachMember(AsObject(from), [&](std::string_view name, value& member) {
        if (name == "id") {
            record.id = AsGuid(member);
            hasID = true;
        } else if (name == "name") {
            record.name = AsText(member);
            hasName = true;
        } else {
            onOther(record, name, member);
        }
    });
    Require(hasID, "id");
    Require(hasName, "name");
    return record;
}

template <class Record>
Record Read(value& from) {
    return ReadNamed<Record>(from, [](Record&, std::string_view, value&) {});
}

template <>
Asset Read(value& from) {
    bool hasType = false;
    auto asset = ReadNamed<Asset>(from, [&](Asset& record, std::string_view name, value& member) {
        if (name != "type") return;
        record.type = AsText(member);
        hasType = true;
    });
    Require(hasType, "type");
    return asset;
}

template <>
Project Read(value& from) {
    bool hasRoot = false;
    auto project =
        ReadNamed<Project>(from, [&](Project& record, std::string_view name, value& member) {
            if (name != "root_folder") return;
            record.rootAsset = Read<Asset>(member);
            hasRoot = true;
        });
    Require(hasRoot, "root_folder");
    return project;
}

template <>
ReviewLink Read(value& from) {
    ReviewLink link;
    ForEachMember(AsObject(from), [&](std::string_view name, value& member) {
        if (name == "id" && !member.is_null()) link.id = AsGuid(member);
        if (name == "url" && !member.is_null()) link.url = std::string(AsText(member));
    });
    return link;
}

void RequireMember(bool present, char const* name) {
    if (!present)
        throw moxcore::config::ResultException(kMalformedAnswer, std::string("it has no ") + name);
}

void RequireToken(std::string_view text, std::string const& name) {
    if (!IsToken(text))
        throw moxcore::config::ResultException(
            kMalformedAnswer, "its " + name + " is no token of " + std::to_string(kShortestToken) +
                                  " or more visible characters");
}

/// Calls `onMember` for each member of the body's one object.
template <class OnMember>
void ReadBody(std::string& body, OnMember onMember) {
    thread_local simdjson::ondemand::parser parser;
    std::string problem;
    try {
        if (body.capacity() - body.size() < simdjson::SIMDJSON_PADDING)
            body.reserve(body.size() + simdjson::SIMDJSON_PADDING);
        simdjson::ondemand::document document = parser.iterate(body);
        ForEachMember(document.get_object(), onMember);
        char const* rest = nullptr;
        if (document.current_location().get(rest) != simdjson::OUT_OF_BOUNDS)
            throw Malformed("more follows after the end of the JSON");
        return;
    } catch (Malformed const& malformed) {
        problem = malformed.Text();
    } catch (simdjson::simdjson_error const& error) {
        problem = std::string("it is no such JSON: ") + error.what();
        if (problem.ends_with('.')) problem.pop_back();  // a clause of the sentence it stands in
    }
    throw moxcore::config::ResultException(kMalformedAnswer, problem);
}

/// Reads the member `name` of the body with `read`.
template <class Content, class ReadMember>
Content ReadOnly(std::string& body, char const* name, ReadMember read) {
    std::optional<Content> content;
    ReadBody(body, [&](std::string_view member, value& from) {
        if (member == name) content = read(from);
    });
    RequireMember(content.has_value(), name);
    return *std::move(content);
}

template <class Record>
std::vector<Record> ReadList(std::string& body, char const* name) {
    // No record is shorter than its ID: what is set aside stays in proportion to what was sent.
    std::size_t const most = body.size() / 36;
    return ReadOnly<std::vector<Record>>(body, name, [most](value& from) {
        simdjson::ondemand::array elements;
        auto const error = from.get_array().get(elements);
        if (error == simdjson::INCORRECT_TYPE) throw Malformed("is no list");
        if (error) throw simdjson::simdjson_error(error);
        std::vector<Record> records;
        std::size_t count = 0;
        if (elements.count_elements().get(count) == simdjson::SUCCESS)
            records.reserve(std::min(count, most));
        for (auto element : elements) {
            value record = element.value();
            try {
                records.push_back(Read<Record>(record));
            } catch (Malformed const& malformed) {
                throw malformed.Within("[" + std::to_string(records.size()) + "]");
            }
        }
        return records;
    });
}

}  // namespace

void PrepareToRead() {
    [[maybe_unused]] auto const error = simdjson::ondemand::parser().allocate(1);
}

User ReadUser(std::string& body) {
    return ReadOnly<User>(body, "user", Read<User>);
}

std::vector<Account> ReadAccounts(std::string& body) {
    return ReadList<Account>(body, "accounts");
}

std::vector<Workspace> ReadWorkspaces(std::string& body) {
    return ReadList<Workspace>(body, "workspaces");
}

std::vector<Project> ReadProjects(std::string& body) {
    return ReadList<Project>(body, "projects");
}

std::vector<Asset> ReadAssets(std::string& body) {
    return ReadList<Asset>(body, "assets");
}

ReviewLink ReadReviewLink(std::string& body) {
    return ReadOnly<ReviewLink>(body, "review_link", Read<ReviewLink>);
}

PublishedAsset ReadPublishedAsset(std::string& body) {
    PublishedAsset published;
    bool hasAsset = false;
    bool hasBytes = false;
    ReadBody(body, [&](std::string_view name, value& member) {
        if (name == "asset") {
            published.asset = Read<Asset>(member);
            hasAsset = true;
        } else if (name == "sha256") {
            published.sha256 = AsText(member);
        } else if (name == "bytes") {
            published.bytes = static_cast<std::uint64_t>(AsNumber(member));
            hasBytes = true;
        }
    });
    RequireMember(hasAsset, "asset");
    RequireMember(!published.sha256.empty(), "sha256");
    RequireMember(hasBytes, "bytes");
    return published;
}

GrantedTokens ReadGrantedTokens(std::string& body) {
    GrantedTokens granted;
    ReadBody(body, [&](std::string_view name, value& member) {
        if (name == "access_token") granted.accessToken = AsText(member);
        if (name == "refresh_token") granted.refreshToken = AsText(member);
        if (name == "expires_in") granted.expiresInSeconds = AsNumber(member);
    });
    RequireMember(!granted.accessToken.empty(), "access_token");
    RequireMember(!granted.refreshToken.empty(), "refresh_token");
    RequireMember(granted.expiresInSeconds > 0, "expires_in");
    RequireToken(granted.accessToken, "access_token");
    RequireToken(granted.refreshToken, "refresh_token");
    return granted;
}

ServiceError ReadServiceError(std::string& body) noexcept {
    ServiceError found;
    try {
        ReadBody(body, [&](std::string_view name, value& member) {
            if (name == "error_description") found.message = AsText(member);
            if (name != "error") return;
            simdjson::ondemand::json_type type{};
            if (member.type().get(type) != simdjson::SUCCESS) return;
            if (type == simdjson::ondemand::json_type::string) {
                found.code = AsText(member);
            } else {
                ForEachMember(AsObject(member), [&](std::string_view inner, value& text) {
                    if (inner == "code") found.code = AsText(text);
                    if (inner == "message") found.message = AsText(text);
                });
            }
        });
    } catch (std::exception const&) {  // an error page of something in between
        return {};
    }
    return found;
}

}  // namespace quillosdk
