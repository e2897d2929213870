// Throughput and memory of an upload; see README.md.

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/upload_bench/UploadPeers.h"
#include "quillosdk/PieceReader.h"
#include "quillosdk/UploadState.h"

namespace {

using namespace uploadbench;
namespace fs = std::filesystem;

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

/// A number of KiB in /proc/self/status.
long Status(std::string const& name) {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name + ":"))
            return std::strtol(line.c_str() + name.size() + 1, nullptr, 10);
    }
    throw std::runtime_error("no " + name);
}

/// The processor's time that this process has taken, or the programs that it has waited for.
double ProcessorSeconds(int whose) {
    rusage usage{};
    getrusage(whose, &usage);
    auto const seconds = [](timeval const& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// What reading a file and hashing it as an upload does takes of the processor's time.
double HashingSeconds(fs::path const& path) {
    auto const before = ProcessorSeconds(RUSAGE_SELF);
    quillosdk::PieceReader reader(std::make_shared<quillosdk::FileSnapshot const>(path.string()));
    auto const size = fs::file_size(path);
    for (std::uint64_t at = 0; at < size; at += quillosdk::kPieceBytes)
        static_cast<void>(reader.Read(at, std::min(quillosdk::kPieceBytes, size - at)));
    static_cast<void>(reader.ContentSha256());
    return ProcessorSeconds(RUSAGE_SELF) - before;
}

void Run(Settings const& settings) {
    Scratch const scratch(settings.directory);
    UploadPeers bench(scratch.path);
    auto const movie = scratch.path / "movie.mp4";
    WriteRandom(movie, settings.mib * kMiB);

    std::vector<double> ours;
    std::vector<double> curls;
    double const selfBefore = ProcessorSeconds(RUSAGE_SELF);
    double const curlBefore = ProcessorSeconds(RUSAGE_CHILDREN);
    for (std::uint64_t round = 0; round < settings.rounds; ++round) {
        ours.push_back(UploadPeers::Measure(movie, [&] { bench.UploadOurs(movie); }));
        curls.push_back(UploadPeers::Measure(movie, [&] { bench.UploadCurls(movie); }));
        std::printf("round %lu: TransferManager %.0f MiB/s, curl %.0f MiB/s\n", round + 1,
                    ours.back(), curls.back());
        std::fflush(stdout);
    }
    if (settings.rounds > 0) {
        auto const rounds = static_cast<double>(settings.rounds);
        double const self = (ProcessorSeconds(RUSAGE_SELF) - selfBefore) / rounds;
        double const curl = (ProcessorSeconds(RUSAGE_CHILDREN) - curlBefore) / rounds;
        double const hashing = HashingSeconds(movie);
        std::printf("ratio of the medians: %.2f\n", Median(ours) / Median(curls));
        std::printf(
            "processor: TransferManager %.2f s, of it hashing %.2f s; curl %.2f s; ratio without "
            "hashing %.2f\n",
            self, hashing, curl, (self - hashing) / curl);
    }

    if (settings.sparseMib == 0) return;
    auto const sparse = scratch.path / "sparse.mp4";
    std::ofstream(sparse).put('x');
    fs::resize_file(sparse, settings.sparseMib * kMiB);
    std::ofstream("/proc/self/clear_refs") << "5";  // the high-water mark begins anew
    long const before = Status("VmRSS");
    double const rate = UploadPeers::Measure(sparse, [&] { bench.UploadOurs(sparse); });
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
