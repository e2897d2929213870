// The service's answers, as each of the SDK's readers takes them.

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

#include "moxcore/config/Error.h"
#include "quillosdk/AnswerReader.h"
#include "quillosdk/Transport.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using nlohmann::json;

/// What `read` makes of the body; none when it is refused.
template <class Content>
std::optional<Content> Read(Content (*read)(std::string&), std::string_view input) {
    std::string body(input);
    std::optional<Content> content;
    try {
        content = read(body);
    } catch (moxcore::config::ResultException const& refused) {
        FUZZ_REQUIRE(moxcore::config::ExtractResultFromException(std::current_exception()) ==
                     quillosdk::kMalformedAnswer);
        // Goes into a message as it is: nothing of the service's may stand in it.
        std::string_view const why = refused.what();
        FUZZ_REQUIRE(!why.empty() && why.size() < 200);
        for (char const c : why)
            FUZZ_REQUIRE(c >= ' ' && c < 0x7F);
    }
    FUZZ_REQUIRE(body == input);
    return content;
}

std::string LowerCase(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    return text;
}

/// Whether the record says what another reader of JSON finds there.
template <class Record>
bool IsAsIn(Record const& record, json const& from) {
    std::optional<quillocommon::Guid> const id = record.id;
    return fuzz::IsUtf8(record.name) && from.at("name").get<std::string>() == record.name &&
           LowerCase(from.at("id").get<std::string>()) == id.value().AsString();
}

template <>
bool IsAsIn(quillosdk::Project const& project, json const& from) {
    return from.at("name").get<std::string>() == project.name &&
           IsAsIn(project.rootAsset, from.at("root_folder"));
}

template <class Record>
void TryList(std::vector<Record> (*read)(std::string&), char const* name, std::string_view input,
             json const& document) {
    auto const records = Read(read, input);
    if (!records || !document.is_object()) return;  // members that are passed over may be anything
    auto const& list = document.at(name);
    FUZZ_REQUIRE(list.size() == records->size());
    for (std::size_t i = 0; i < list.size(); ++i)
        FUZZ_REQUIRE(IsAsIn((*records)[i], list[i]));
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const input = fuzz::AsText(data, size);
    auto const document = json::parse(input, nullptr, /*allow_exceptions=*/false);
    TryList(quillosdk::ReadAccounts, "accounts", input, document);
    TryList(quillosdk::ReadWorkspaces, "workspaces", input, document);
    TryList(quillosdk::ReadProjects, "projects", input, document);
    TryList(quillosdk::ReadAssets, "assets", input, document);
    if (auto const user = Read(quillosdk::ReadUser, input); user && document.is_object())
        FUZZ_REQUIRE(IsAsIn(*user, document.at("user")));
    if (auto const link = Read(quillosdk::ReadReviewLink, input))
        FUZZ_REQUIRE(!link->url || fuzz::IsUtf8(*link->url));
    if (auto const published = Read(quillosdk::ReadPublishedAsset, input))
        FUZZ_REQUIRE(published->bytes <= INT64_MAX && !published->sha256.empty());
    if (auto const granted = Read(quillosdk::ReadGrantedTokens, input))
        FUZZ_REQUIRE(granted->expiresInSeconds > 0 && !granted->accessToken.empty() &&
                     !granted->refreshToken.empty());
    std::string body(input);
    auto const error = quillosdk::ReadServiceError(body);
    FUZZ_REQUIRE(fuzz::IsUtf8(error.code) && fuzz::IsUtf8(error.message));
    return 0;
}
