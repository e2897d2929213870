// The header Upload-Metadata.

#include <string>

#include "service/base/ApiError.h"
#include "service/base/Text.h"
#include "service/uploads/UploadMetadata.h"
#include "service/uploads/Uploads.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const header = fuzz::AsText(data, size);
    try {
        auto const values = quilloservice::ParseUploadMetadata(header);
        FUZZ_REQUIRE(values.size() <= size);
        for (auto const& [key, value] : values) {
            FUZZ_REQUIRE(!key.empty() && key.find_first_of(" ,") == std::string::npos);
            FUZZ_REQUIRE(header.find(key) != std::string_view::npos && value.size() < size);
        }
        auto const upload = quilloservice::ReadUploadMetadata(std::string(header), 1);
        FUZZ_REQUIRE(values.at("filename") == upload.name);
        FUZZ_REQUIRE(upload.folder.IsNil() || values.at("folder_id") == upload.folder.GetText());
        FUZZ_REQUIRE(!upload.name.empty() && upload.name.size() <= 1024);
        FUZZ_REQUIRE(fuzz::IsUtf8(upload.name) && upload.name.find('\0') == std::string::npos);
        FUZZ_REQUIRE(!upload.stack || values.at("version_stack_id") == upload.stack->GetText());
        // Is sent back as a header.
        for (char const c : upload.mediaType)
            FUZZ_REQUIRE(c > ' ' && c < 0x7F);
    } catch (quilloservice::ApiError const& refused) {
        FUZZ_REQUIRE(refused.status == 400 && refused.code == "bad_request");
        FUZZ_REQUIRE(fuzz::IsUtf8(refused.what()));
    }
    return 0;
}
