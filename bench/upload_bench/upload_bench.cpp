// Throughput and memory of an upload; see README.md.

#include <openssl/evp.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "moxcore/config/Error.h"
#include "quilloauth/AuthSession.h"
#include "quillocommon/ServiceAddress.h"
#include "quillosdk/QuilloClient.h"
#include "tests/support/ServiceProcess.h"

namespace {

using namespace quillosdk;
namespace fs = std::filesystem;

constexpr std::uint64_t kMiB = std::uint64_t{1} << 20;

struct Settings {
    std::uint64_t mib = 1024;
    std::uint64_t rounds = 5;
    std::uint64_t sparseMib = 4096;
    fs::path directory = fs::temp_directory_path();
};

Settings Parse(int argc, char** argv) {
    Settings settings;
    std::map<std::string, std::function<void(char const*)>> const known{
        {"--mib", [&](char const* v) { settings.mib = std::stoul(v); }},
        {"--rounds", [&](char const* v) { settings.rounds = std::stoul(v); }},
        {"--sparse-mib", [&](char const* v) { settings.sparseMib = std::stoul(v); }},
        {"--directory", [&](char const* v) { settings.directory = v; }},
    };
    for (int i = 1; i < argc; i += 2) {
        auto const found = known.find(argv[i]);
        if (found == known.end() || i + 1 == argc)
            throw std::runtime_error("usage: see bench/upload_bench/README.md");
        found->second(argv[i + 1]);
    }
    return settings;
}

/// A directory that is removed at the end.
class Scratch {
public:
    explicit Scratch(fs::path const& parent)
        : path(parent / ("upload_bench." + std::to_string(getpid()))) {
        fs::create_directories(path);
    }
    ~Scratch() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    Scratch(Scratch const&) = delete;
    Scratch& operator=(Scratch const&) = delete;

    fs::path const path;
};

void WriteRandom(fs::path const& path, std::uint64_t mib) {
    std::ofstream file(path, std::ios::binary);
    std::mt19937_64 random(1);
    std::vector<std::uint64_t> block(kMiB / sizeof(std::uint64_t));
    for (std::uint64_t i = 0; i < mib; ++i) {
        std::generate(block.begin(), block.end(), std::ref(random));
        file.write(reinterpret_cast<char const*>(block.data()), static_cast<long>(kMiB));
    }
    if (!file) throw std::runtime_error("cannot write " + path.string());
}

/// A number of KiB in /proc/self/status.
long Status(std::string const& name) {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name + ":"))
            return std::strtol(line.c_str() + name.size() + 1, nullptr, 10);
    }
    throw std::runtime_error("no " + name);
}

class Bench {
public:
    explicit Bench(fs::path const& scratch)
        : service(scratch / "data"),
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
        auto const workspace =
            client.GetWorkspaces()
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

    void UploadOurs(fs::path const& path) {
        quillocommon::Guid id;
        auto const upload =
            client.GetTransferManager().Upload(UploadRequest(folder, path.string(), {}), id).Get();
        if (!upload->IsSuccessful()) throw std::runtime_error("the upload was refused");
    }

    /// One PATCH of the whole file, by the curl program.
    void UploadCurls(fs::path const& path) {
        auto const created =
            Transport::Get()
                ->Send({.method = "POST",
                        .url = service.Address() + "/v1/uploads",
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
                                       service.Address() + created->headers.at("LOCATION")};
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

    /// In MiB/s.
    static double Measure(fs::path const& path, std::function<void()> const& upload) {
        auto const start = std::chrono::steady_clock::now();
        upload();
        std::chrono::duration<double> const took = std::chrono::steady_clock::now() - start;
        return static_cast<double>(fs::file_size(path)) / static_cast<double>(kMiB) / took.count();
    }

private:
    [[nodiscard]] std::string Metadata() const {
        std::string const id = folder.AsString();
        unsigned char base64[64];
        EVP_EncodeBlock(base64, reinterpret_cast<unsigned char const*>(id.data()),
                        static_cast<int>(id.size()));
        return std::string("filename YmVuY2gubXA0,folder_id ") +
               reinterpret_cast<char const*>(base64);
    }

    testsupport::ServiceProcess service;
    std::shared_ptr<quilloauth::AuthSession> auth;
    std::string token;
    QuilloClient client{QuilloConfig("bench"), {}};
    quillocommon::Guid folder;
};

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Run(Settings const& settings) {
    Scratch const scratch(settings.directory);
    Bench bench(scratch.path);
    auto const movie = scratch.path / "movie.mp4";
    WriteRandom(movie, settings.mib);

    std::vector<double> ours;
    std::vector<double> curls;
    for (std::uint64_t round = 0; round < settings.rounds; ++round) {
        ours.push_back(Bench::Measure(movie, [&] { bench.UploadOurs(movie); }));
        curls.push_back(Bench::Measure(movie, [&] { bench.UploadCurls(movie); }));
        std::printf("round %lu: TransferManager %.0f MiB/s, curl %.0f MiB/s\n", round + 1,
                    ours.back(), curls.back());
        std::fflush(stdout);
    }
    if (settings.rounds > 0)
        std::printf("ratio of the medians: %.2f\n", Median(ours) / Median(curls));

    if (settings.sparseMib == 0) return;
    auto const sparse = scratch.path / "sparse.mp4";
    std::ofstream(sparse).put('x');
    fs::resize_file(sparse, settings.sparseMib * kMiB);
    std::ofstream("/proc/self/clear_refs") << "5";  // the high-water mark begins anew
    long const before = Status("VmRSS");
    double const rate = Bench::Measure(sparse, [&] { bench.UploadOurs(sparse); });
    std::printf("%lu MiB sparse: %.0f MiB/s, the process grew by %.1f MiB\n", settings.sparseMib,
                rate, static_cast<double>(Status("VmHWM") - before) / 1024);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        Run(Parse(argc, argv));
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "upload_bench: %s\n", error.what());
        return 1;
    }
}
