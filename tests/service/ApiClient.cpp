#include "tests/service/ApiClient.h"

#include <openssl/evp.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>

#include "service/base/Digest.h"

namespace quilloservice::test {

using nlohmann::json;

namespace {

json Require(httplib::Result const& result, std::string const& what) {
    if (!result) throw std::runtime_error(what + ": no answer");
    if (result->status >= 400) {
        throw std::runtime_error(what + ": " + std::to_string(result->status) + " " + result->body);
    }
    return result->body.empty() ? json() : json::parse(result->body);
}

}  // namespace

ApiClient::ApiClient(int port) : http("127.0.0.1", port) {
    http.set_keep_alive(true);
    http.set_tcp_nodelay(true);
    // Writing many megabytes to the disk of a busy machine takes long.
    http.set_read_timeout(60);
    http.set_write_timeout(60);
    json pair = Require(
        http.Post("/oauth/token",
                  "client_id=test&grant_type=urn:quillo:grant-type:local-user&local_user_secret=" +
                      LocalUserSecretAt(port),
                  "application/x-www-form-urlencoded"),
        "sign-in");
    token = pair["access_token"];
    json accounts = Get("/v1/accounts")["accounts"];
    if (accounts.empty()) return;
    std::string account = accounts[0]["id"];
    std::string workspace = Get("/v1/accounts/" + account + "/workspaces")["workspaces"][0]["id"];
    json first = Get("/v1/workspaces/" + workspace + "/projects")["projects"][0];
    project = first["id"];
    folder = first["root_folder"]["id"];
}

httplib::Result ApiClient::Send(std::string const& method, std::string const& path,
                                httplib::Headers headers, std::string const& body) {
    httplib::Request request;
    request.method = method;
    request.path = path;
    request.headers = std::move(headers);
    for (auto [name, value] : {std::pair("Authorization", "Bearer " + token),
                               std::pair("Tus-Resumable", std::string("1.0.0"))}) {
        if (!request.has_header(name)) request.set_header(name, value);
    }
    request.body = body;
    return http.send(request);
}

json ApiClient::Get(std::string const& path) {
    return Require(Send("GET", path), path);
}

json ApiClient::Post(std::string const& path, json const& body) {
    return Require(Send("POST", path, {}, body.dump()), path);
}

std::string ApiClient::CreateUpload(std::size_t length, std::string const& name,
                                    std::string const& stack, httplib::Headers headers) {
    headers.emplace("Upload-Length", std::to_string(length));
    headers.emplace("Upload-Metadata", Metadata(name, folder, stack));
    auto result = Send("POST", "/v1/uploads", headers);
    Require(result, "create upload");
    return result->get_header_value("Location");
}

httplib::Result ApiClient::Append(std::string const& upload, std::size_t offset,
                                  std::string const& body, httplib::Headers headers) {
    headers.emplace("Upload-Offset", std::to_string(offset));
    headers.emplace("Content-Type", "application/offset+octet-stream");
    return Send("PATCH", upload, std::move(headers), body);
}

std::string ApiClient::OffsetOf(std::string const& upload) {
    auto result = Send("HEAD", upload);
    Require(result, "HEAD");
    return result->get_header_value("Upload-Offset");
}

json ApiClient::Upload(std::string const& content, std::string const& name,
                       std::string const& stack) {
    std::string upload = CreateUpload(content.size(), name, stack);
    Require(Append(upload, 0, content), "append");
    return Get(upload + "/asset");
}

std::string ApiClient::CreateLink(std::string const& name) {
    return Post("/v1/projects/" + project + "/review-links", {{"name", name}})["review_link"]["id"];
}

void ApiClient::AddToLink(std::string const& link, std::string const& asset) {
    Post("/v1/review-links/" + link + "/assets", {{"asset_ids", {asset}}});
}

std::filesystem::path LocalUserSecretPath(int port) {
    char const* runtime = std::getenv("XDG_RUNTIME_DIR");
    char const* home = std::getenv("HOME");
    std::string below = "quillo/" + std::to_string(port) + "/127.0.0.1.secret";
    if (runtime != nullptr && std::filesystem::exists(runtime / std::filesystem::path(below))) {
        return runtime / std::filesystem::path(below);
    }
    return home / std::filesystem::path(".cache/" + below);
}

std::string LocalUserSecretAt(int port) {
    std::string secret;
    std::ifstream(LocalUserSecretPath(port)) >> secret;
    return secret;
}

std::string Metadata(std::string const& name, std::string const& folder, std::string const& stack) {
    std::string metadata = "filename " + ToBase64(name) + ",folder_id " + ToBase64(folder);
    if (!stack.empty()) metadata += ",version_stack_id " + ToBase64(stack);
    return metadata;
}

std::string ToBase64(std::string const& bytes) {
    std::string text(bytes.size() * 4 / 3 + 4, '\0');
    int size = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                               reinterpret_cast<unsigned char const*>(bytes.data()),
                               static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(size));
    return text;
}

std::string ChecksumOf(std::string const& body) {
    return "sha256 " + ToBase64(Sha256(body));
}

std::string Noise(std::size_t size, unsigned seed) {
    std::mt19937_64 random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

}  // namespace quilloservice::test
