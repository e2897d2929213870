// How much of a slow and long line an upload fills; see README.md.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/line_bench/Shaper.h"
#include "bench/upload_bench/UploadPeers.h"

namespace {

using namespace uploadbench;
using linebench::Line;
using linebench::Shaper;
using std::chrono::milliseconds;
namespace fs = std::filesystem;

constexpr std::uint64_t kMB = 1'000'000;

struct Settings {
    bool quick = false;
    bool heldDown = true;  // the row in which a single connection is
    std::size_t many = 0;  // small files, instead of the grid
    std::size_t rounds = 3;
    std::uint64_t seconds = 8;                          // that a line takes for the file of its row
    std::vector<std::uint64_t> rates{10, 25, 60, 120};  // in MB/s
    std::vector<int> delays{0, 10, 50, 100, 150};       // of one way, in ms
    fs::path directory = fs::temp_directory_path();
};

/// Numbers separated by commas.
template <class Number>
std::vector<Number> List(std::string const& text) {
    std::vector<Number> numbers;
    std::istringstream words(text);
    for (std::string word; std::getline(words, word, ',');)
        numbers.push_back(static_cast<Number>(std::stoul(word)));
    return numbers;
}

Settings Parse(std::vector<std::string> const& words) {
    Settings settings;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] == "--quick") {
            settings.quick = true;
            settings.rounds = 1;
            settings.seconds = 1;
            settings.rates = {25, 60};
            settings.delays = {0, 50};
            continue;
        }
        if (words[i] == "--no-held-down") {
            settings.heldDown = false;
            continue;
        }
        if (i + 1 == words.size()) throw std::runtime_error("see bench/line_bench/README.md");
        auto const& value = words[i + 1];
        if (words[i] == "--rounds")
            settings.rounds = std::max(1ul, std::stoul(value));
        else if (words[i] == "--seconds")
            settings.seconds = std::max(1ul, std::stoul(value));
        else if (words[i] == "--rates")
            settings.rates = List<std::uint64_t>(value);
        else if (words[i] == "--delays")
            settings.delays = List<int>(value);
        else if (words[i] == "--many")
            settings.many = std::stoul(value);
        else if (words[i] == "--directory")
            settings.directory = value;
        else
            throw std::runtime_error("see bench/line_bench/README.md");
        ++i;
    }
    return settings;
}

class LineBench {
public:
    explicit LineBench(Settings const& settings)
        : settings(settings), scratch(settings.directory), peers(scratch.path) {}

    void Run() {
        if (settings.many > 0) return RunMany();
        auto const& delays = settings.delays;
        std::printf("| line, MB/s |");
        for (int delay : delays)
            std::printf(" %d ms |", delay);
        std::printf("\n|---|");
        for (std::size_t i = 0; i < delays.size(); ++i)
            std::printf("---|");
        for (std::uint64_t rate : settings.rates) {
            PrintRow(std::to_string(rate), rate, delays, {.bytesPerSecond = rate * kMB});
        }
        if (settings.heldDown) PrintHeldDown();
        std::printf("\n");
    }

private:
    void PrintHeldDown() {
        // About one connection in a hundred stands still at any time: 2 s in 200, at 5 MB/s.
        PrintRow("60, a connection 5 and stalls", 60, settings.delays,
                 {.bytesPerSecond = 60 * kMB,
                  .connectionBytesPerSecond = 5 * kMB,
                  .stallsPerMib = 0.002});
    }

    /// Many files of 1 MiB one after another, where the requests' round trips are what matters.
    void RunMany() {
        auto const movie = scratch.path / "movie.mp4";
        WriteRandom(movie, kMiB);
        std::printf("| %zu files of 1 MiB | ratio |\n|---|---|\n", settings.many);
        for (int delay : {0, 10, 50}) {
            Line const line{.bytesPerSecond = 60 * kMB, .oneWay = milliseconds(delay)};
            auto const times = [&](auto upload) {
                return [this, upload] {
                    for (std::size_t i = 0; i < settings.many; ++i)
                        upload();
                };
            };
            auto const ours = MeasureOn(line, movie, times([&] { peers.UploadOurs(movie); }));
            auto const curls = MeasureOn(line, movie, times([&] { peers.UploadCurls(movie); }));
            std::printf("| 60 MB/s, %d ms | %.2f |\n", delay, ours / curls);
            std::fflush(stdout);
        }
    }

    void PrintRow(std::string const& name, std::uint64_t rate, std::vector<int> const& delays,
                  Line line) {
        // A connection that is held down would take far longer than its line.
        std::uint64_t const megabytes =
            settings.seconds * (line.connectionBytesPerSecond == 0 ? rate : rate / 4);
        auto const movie = scratch.path / "movie.mp4";
        WriteRandom(movie, megabytes * kMB);
        std::printf("\n| %s |", name.c_str());
        for (int delay : delays) {
            line.oneWay = milliseconds(delay);
            std::printf(" %.2f |", Ratio(movie, line));
            std::fflush(stdout);
        }
    }

    /// Ours divided by curl's: the medians of the throughputs.
    double Ratio(fs::path const& movie, Line const& line) {
        std::vector<double> ours;
        std::vector<double> curls;
        for (std::size_t round = 0; round < settings.rounds; ++round) {
            ours.push_back(MeasureOn(line, movie, [&] { peers.UploadOurs(movie); }));
            curls.push_back(MeasureOn(line, movie, [&] { peers.UploadCurls(movie); }));
        }
        std::fprintf(stderr, "%d ms: ours %.1f MiB/s, curl %.1f MiB/s\n",
                     static_cast<int>(line.oneWay.count()), Median(ours), Median(curls));
        return Median(ours) / Median(curls);
    }

    /// Each upload has a line of its own, so that neither finds the other's connections or stalls.
    double MeasureOn(Line const& line, fs::path const& movie, std::function<void()> const& upload) {
        Shaper const shaper(peers.ServiceAddress(), line);
        peers.GoThrough(shaper.Address());
        return UploadPeers::Measure(movie, upload);
    }

    Settings settings;
    Scratch scratch;
    UploadPeers peers;
};

}  // namespace

int main(int argc, char** argv) {
    try {
        LineBench(Parse({argv + 1, argv + argc})).Run();
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "line_bench: %s\n", error.what());
        return 1;
    }
}
