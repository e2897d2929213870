#include "tests/support/FakeTus.h"

#include <openssl/evp.h>
#include <xxhash.h>

#include <algorithm>
#include <sstream>
#include <utility>
#include <vector>

#include "moxcore/config/Error.h"
#include "tests/support/ScriptedTransport.h"

namespace testsupport {
namespace {

using quillosdk::HttpRequest;
using quillosdk::HttpResponse;

std::string Digest(std::string const& bytes) {
    std::string digest(32, '\0');
    EVP_Digest(bytes.data(), bytes.size(), reinterpret_cast<unsigned char*>(digest.data()), nullptr,
               EVP_sha256(), nullptr);
    return digest;
}

std::string FastDigest(std::string const& bytes) {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits(bytes.data(), bytes.size()));
    return {reinterpret_cast<char const*>(canonical.digest), sizeof canonical.digest};
}

std::string Base64Of(std::string const& bytes) {
    std::string text(45, '\0');
    text.resize(static_cast<std::size_t>(EVP_EncodeBlock(
        reinterpret_cast<unsigned char*>(text.data()),
        reinterpret_cast<unsigned char const*>(bytes.data()), static_cast<int>(bytes.size()))));
    return text;
}

[[noreturn]] void LoseConnection() {
    throw moxcore::config::ResultException(quillosdk::kConnectionLost, "the weather was bad");
}

std::string AssetOf(FakeTus::Upload const& upload) {
    return R"({"asset":{"id":"3f2504e0-4f89-41d3-9a0c-0305e82c3301","name":"m","type":"file"},)"
           R"("version":1,"version_stack_id":null,"sha256":")" +
           Sha256Of(upload.bytes) + R"(","bytes":)" + std::to_string(upload.bytes.size()) + "}";
}

}  // namespace

std::string Sha256Of(std::string const& bytes) {
    std::string text;
    for (unsigned char const byte : Digest(bytes)) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

FakeTus::Event FakeTus::NextEvent(std::string const& method) {
    auto const found = std::find_if(events.begin(), events.end(),
                                    [&](Event const& event) { return event.method == method; });
    if (found == events.end()) return {};
    auto event = *found;
    events.erase(found);
    return event;
}

std::optional<HttpResponse> FakeTus::Answer(HttpRequest const& request) {
    if (onRequest) onRequest(request);
    if (HeaderOf(request, "Tus-Resumable") != "1.0.0") return HttpResponse{412};
    bool const joins = HeaderOf(request, "Upload-Concat").starts_with("final;");
    auto const event = NextEvent(joins ? "JOIN" : request.method);
    if (event.status != 0) return HttpResponse{event.status, event.headers};
    auto const weather = event.weather;
    if (weather == Weather::LoseRequest) LoseConnection();

    auto path = request.url.substr(std::string(ScriptedTransport::kAddress).size());
    if (request.method == "OPTIONS") return HttpResponse{204, {{"TUS-EXTENSION", extensions}}};
    if (request.method == "POST") {
        if (weather == Weather::LoseUpload) uploads.erase(uploads.begin());
        auto const answer = joins ? Join(request) : Create(request);
        if (weather == Weather::CorruptContent) uploads.rbegin()->second.bytes[0] ^= 1;
        if (weather == Weather::LoseAnswer) LoseConnection();
        return answer;
    }
    bool const asksForAsset = path.ends_with("/asset");
    if (asksForAsset) path.resize(path.size() - 6);
    if (weather == Weather::LoseUpload) uploads.erase(path);
    auto const found = uploads.find(path);
    if (found == uploads.end()) return HttpResponse{404};
    auto& upload = found->second;

    if (weather == Weather::LoseHalf) {
        upload.bytes.resize(upload.bytes.size() / 2);
        LoseConnection();
    }
    if (weather == Weather::KeepHalf || weather == Weather::KeepHalfPolitely) {
        auto const body = BodyOf(request);
        upload.bytes.append(body, 0, body.size() / 2);
        if (weather == Weather::KeepHalf) LoseConnection();
        return HttpResponse{204, {{"UPLOAD-OFFSET", std::to_string(upload.bytes.size())}}};
    }
    if (request.method == "DELETE") {
        uploads.erase(found);
        return HttpResponse{204};
    }
    if (request.method == "HEAD")
        return HttpResponse{200,
                            {{"UPLOAD-OFFSET", std::to_string(upload.bytes.size())},
                             {"UPLOAD-LENGTH", std::to_string(upload.length)}}};
    if (asksForAsset) {
        if (upload.bytes.size() < upload.length) return HttpResponse{409};
        return HttpResponse{200, {}, AssetOf(upload)};
    }
    auto answer = Append(upload, request);
    if (weather == Weather::CorruptContent) upload.bytes[0] ^= 1;
    if (namesAsset && !upload.isPart && upload.bytes.size() == upload.length)
        answer.headers.emplace("QUILLO-ASSET", AssetOf(upload));
    if (weather == Weather::LoseAnswer) LoseConnection();
    return answer;
}

HttpResponse FakeTus::Create(HttpRequest const& request) {
    Upload const made{HeaderOf(request, "Idempotency-Key"), HeaderOf(request, "Upload-Metadata"),
                      std::stoul(HeaderOf(request, "Upload-Length")), "",
                      HeaderOf(request, "Upload-Concat") == "partial"};
    auto found = std::find_if(uploads.begin(), uploads.end(),
                              [&](auto const& entry) { return entry.second.key == made.key; });
    if (found == uploads.end())
        found = uploads.emplace("/v1/uploads/u" + std::to_string(++created), made).first;
    return {201, {{"LOCATION", location.value_or(found->first)}}};
}

HttpResponse FakeTus::Join(HttpRequest const& request) {
    auto paths = HeaderOf(request, "Upload-Concat").substr(6);
    if (auto const earlier = joined.find(paths); earlier != joined.end())
        return {201, {{"LOCATION", earlier->second}}};
    Upload movie{"", HeaderOf(request, "Upload-Metadata"), 0, "", false};
    std::vector<std::string> parts;
    for (std::istringstream words(paths); words >> parts.emplace_back();) {
        auto const part = uploads.find(parts.back());
        if (part == uploads.end()) return HttpResponse{404};
        if (!part->second.isPart) return HttpResponse{400};
        if (part->second.bytes.size() < part->second.length) return HttpResponse{409};
        movie.bytes += part->second.bytes;
    }
    parts.pop_back();
    for (auto const& part : parts)
        uploads.erase(part);
    movie.length = movie.bytes.size();
    if (HeaderOf(request, "Quillo-Content-SHA256") != Sha256Of(movie.bytes))
        return HttpResponse{460};
    auto const path = "/v1/uploads/movie" + std::to_string(++created);
    joined.emplace(paths, path);
    uploads.emplace(path, std::move(movie));
    return {201, {{"LOCATION", path}}};
}

HttpResponse FakeTus::Append(Upload& upload, HttpRequest const& request) {
    if (HeaderOf(request, "Upload-Offset") != std::to_string(upload.bytes.size()))
        return HttpResponse{409};
    if (HeaderOf(request, "Content-Type") != "application/offset+octet-stream")
        return HttpResponse{415};
    auto const body = BodyOf(request);
    if (HeaderOf(request, "Upload-Checksum") != "xxh128 " + Base64Of(FastDigest(body)))
        return HttpResponse{460};
    upload.bytes += body;
    if (upload.bytes.size() > upload.length) return HttpResponse{413};
    if (upload.bytes.size() == upload.length && !upload.isPart &&
        HeaderOf(request, "Quillo-Content-SHA256") != Sha256Of(upload.bytes)) {
        upload.bytes.clear();
        return HttpResponse{460};
    }
    return {204, {{"UPLOAD-OFFSET", std::to_string(upload.bytes.size())}}};
}

}  // namespace testsupport
