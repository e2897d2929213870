// What the host prints of the service's texts.

#include <string>

#include "host/process/Terminal.h"
#include "moxcore/string/Conversions.h"
#include "quillocommon/Url.h"
#include "quillohostkit/text/PlainText.h"
#include "tests/fuzz/Fuzz.h"

namespace {

void RequireSafe(std::string const& line) {
    FUZZ_REQUIRE(fuzz::IsUtf8(line));
    for (auto const unit : moxcore::string::UTF8to16(line)) {
        FUZZ_REQUIRE(unit >= 0x20 && (unit < 0x7F || unit > 0x9F));  // control
        FUZZ_REQUIRE((unit < 0x202A || unit > 0x202E) &&
                     (unit < 0x2066 || unit > 0x2069));                    // turns
        FUZZ_REQUIRE(unit != 0x061C && unit != 0x200E && unit != 0x200F);  // marks of direction
        FUZZ_REQUIRE(unit != 0x2028 && unit != 0x2029);                    // ends of lines
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(fuzz::AsText(data, size));
    auto const line = quillohostkit::OneLine(text);
    RequireSafe(line);
    FUZZ_REQUIRE(quillohostkit::OneLine(line) == line);

    std::string json;
    for (auto const& each : quillohost::JsonLines({{"name", text}})) {
        RequireSafe(each);
        json += each + '\n';
    }
    auto const name = nlohmann::json::parse(json).at("name").get<std::string>();
    if (fuzz::IsUtf8(text)) FUZZ_REQUIRE(name == text);

    if (quillohostkit::IsPlainLink(text)) {
        FUZZ_REQUIRE(line == text && text.find_first_of(" \"\\<>`") == std::string::npos);
        auto const url = quillocommon::ParseUrl(text);
        FUZZ_REQUIRE(!url || !url->hasUser);  // a port or an address may still be none
    }
    return 0;
}
