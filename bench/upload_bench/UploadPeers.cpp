#include "bench/upload_bench/UploadPeers.h"

#include <openssl/evp.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <random>
#include <stdexcept>

#include "quillocommon/ServiceAddress.h"

namespace uploadbench {

using namespace quillosdk;
namespace fs = std::filesystem;

Scratch::Scratch(fs::path const& parent)
    : path(parent / ("upload_bench." + std::to_string(getpid()))) {
    fs::create_directories(path);
}

Scratch::~Scratch() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

void WriteRandom(fs::path const& path, std::uint64_t bytes) {
    std::ofstream file(path, std::ios::binary);
    std::mt19937_64 random(1);
    std::vector<std::uint64_t> block(kMiB / sizeof(std::uint64_t));
    for (std::uint64_t left = bytes; left > 0;) {
        std::generate(block.begin(), block.end(), std::ref(random));
        auto const size = std::min(left, kMiB);
        file.write(reinterpret_cast<char const*>(block.data()), static_cast<long>(size));
        left -= size;
    }
    if (!file) throw std::runtime_error("cannot write " + path.string());
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

UploadPeers::UploadPeers(fs::path const& scratch)
    : service(scratch / "data"),
      address(service.Address()),
      auth(std::make_shared<quilloauth::AuthSession>("bench", "http://127.0.0.1/",
                                                     (scratch / "tokens.json").string())) {
    quillocommon::SetServiceAddress(service.Address());
    static_cast<void>(auth->Login());
    token = auth->GetAccessToken().Get();
    static_cast<void>(client.UpdateAccessToken(token));
    auto const account = client.GetAccounts()
                             .GetCurrentUserAccountList({})
                             .Get()
                             ->GetCurrentUserAccountListObject()
                             .at(0);
    auto const workspace = client.GetWorkspaces()
                               .GetWorkspacesByAccount(GetWorkspacesByAccountRequest(account.id))
                               .Get()
                               ->GetWorkspaceList()
                               .at(0);
    folder = *client.GetProjects()
                  .GetProjectsByWorkspace(GetProjectsByWorkspaceRequest(workspace.id))
                  .Get()
                  ->GetProjectList()
                  .at(0)
                  .rootAsset.id;
}

void UploadPeers::GoThrough(std::string const& newAddress) {
    address = newAddress;
    quillocommon::SetServiceAddress(newAddress);
}

void UploadPeers::UploadOurs(fs::path const& path) {
    quillocommon::Guid id;
    auto const upload =
        client.GetTransferManager().Upload(UploadRequest(folder, path.string(), {}), id).Get();
    if (!upload->IsSuccessful()) throw std::runtime_error("the upload was refused");
}

void UploadPeers::UploadCurls(fs::path const& path) {
    auto const created =
        Transport::Get()
            ->Send({.method = "POST",
                    .url = address + "/v1/uploads",
                    .headers = {{"Authorization", "Bearer " + token},
                                {"Tus-Resumable", "1.0.0"},
                                {"Upload-Length", std::to_string(fs::file_size(path))},
                                {"Upload-Metadata", Metadata()}}})
            .Get();
    std::vector<std::string> words{"curl",
                                   "--silent",
                                   "--show-error",
                                   "--fail",
                                   "--request",
                                   "PATCH",
                                   "--upload-file",
                                   path.string(),
                                   "--header",
                                   "Expect:",
                                   "--header",
                                   "Authorization: Bearer " + token,
                                   "--header",
                                   "Tus-Resumable: 1.0.0",
                                   "--header",
                                   "Upload-Offset: 0",
                                   "--header",
                                   "Content-Type: application/offset+octet-stream",
                                   address + created->headers.at("LOCATION")};
    std::vector<char*> arguments;
    for (auto& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t process = -1;
    int status = -1;
    if (posix_spawnp(&process, "curl", nullptr, nullptr, arguments.data(), environ) != 0 ||
        waitpid(process, &status, 0) != process || status != 0)
        throw std::runtime_error("curl has failed");
}

double UploadPeers::Measure(fs::path const& path, std::function<void()> const& upload) {
    auto const start = std::chrono::steady_clock::now();
    upload();
    std::chrono::duration<double> const took = std::chrono::steady_clock::now() - start;
    return static_cast<double>(fs::file_size(path)) / static_cast<double>(kMiB) / took.count();
}

std::string UploadPeers::Metadata() const {
    std::string const id = folder.AsString();
    unsigned char base64[64];
    EVP_EncodeBlock(base64, reinterpret_cast<unsigned char const*>(id.data()),
                    static_cast<int>(id.size()));
    return std::string("filename YmVuY2gubXA0,folder_id ") + reinterpret_cast<char const*>(base64);
}

}  // namespace uploadbench
