// The exporters that come with the kit.

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "moxcore/filesupport/CommonDirs.h"
#include "quillohostkit/CopyExporter.h"
#include "quillohostkit/ProcessExporter.h"
#include "quillohostkit/exporting/ExportRun.h"
#include "tests/support/MainThreadLoop.h"
#include "tests/support/TemporaryDirectory.h"

namespace quillohostkit {
namespace {

using testing::HasSubstr;
using testsupport::MainThreadLoop;

constexpr std::size_t kPiece = 1 << 20;  // that a copy reads at once

std::string ContentOf(std::filesystem::path const& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// While it lives no file grows beyond `bytes`, as on a disk that is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before);
        rlimit const small{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }
    FullDisk(FullDisk const&) = delete;
    FullDisk& operator=(FullDisk const&) = delete;

private:
    rlimit before{};
    void (*handler)(int);
};

class ReadyExportersTest : public testing::Test {
protected:
    ReadyExportersTest() {
        moxcore::filesupport::commondirs::SetUserRoot(directory.Text());
        EXPECT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    }

    void Begin(std::shared_ptr<Exporter> const& exporter) {
        Asset const asset{QString::fromStdString(source.string()), "{path}", AssetKind::Movie, {}};
        run.emplace(exporter, asset, output,
                    ExportJob::State::Hooks{
                        .onProgress =
                            [this](double fraction) {
                                progress = fraction;
                                if (onProgress) onProgress();
                            },
                        .onEnd = [this](QString const& failure) { end = failure.toStdString(); }});
    }
    /// The failure's reason; empty when there is a movie.
    std::string Export(std::shared_ptr<Exporter> const& exporter) {
        progress.reset();
        end.reset();
        Begin(exporter);
        MainThreadLoop::WaitUntil([this] { return end.has_value(); });
        return *end;
    }
    /// A shell's script, whose $0 is the source, $1 the output, $2 the title and $3 the pipe.
    [[nodiscard]] std::shared_ptr<ProcessExporter> Script(QString const& script) const {
        return std::make_shared<ProcessExporter>(
            "sh", QStringList{"-c", script, "{path}", "{output}", "{title}",
                              QString::fromStdString(pipe.string())});
    }

    testsupport::TemporaryDirectory directory;
    std::filesystem::path const source = directory.Write("clip.mp4", "a movie");
    std::filesystem::path const output = directory.Path() / "movie.mp4";
    std::filesystem::path const pipe = directory.Path() / "pipe";
    std::optional<ExportRun> run;
    std::optional<double> progress;
    std::optional<std::string> end;
    std::function<void()> onProgress;
};

TEST_F(ReadyExportersTest, ReadAProgramsProgressInPercentOrOfAWhole) {
    struct Case {
        char const* print;
        char const* pattern;
        double progress;
    };
    for (auto const& [print, pattern, expected] :
         {Case{"echo 'frame 1 of 4'", "frame (\\d+) of (\\d+)", 0.25},
          Case{"printf '37.5%%\\r' >&2", "([\\d.]+)%", 0.375}}) {
        auto const program = Script(
            QString(print) + "; read line < \"$3\"; cp \"$0\" \"$1\"; printf %s \"$2\" >> \"$1\"");
        program->SetProgressPattern(QRegularExpression(pattern));
        onProgress = [this] { std::ofstream(pipe) << "go on\n"; };
        EXPECT_EQ(Export(program), "") << print;
        EXPECT_EQ(progress, expected) << print;
        EXPECT_EQ(ContentOf(output), "a movie{path}") << "a title is no pattern";
        std::filesystem::remove(output);
    }
}

TEST_F(ReadyExportersTest, SayWhyAProgramHasFailed) {
    struct Case {
        std::shared_ptr<Exporter> exporter;
        char const* reason;
    };
    for (auto const& [exporter, reason] :
         {Case{Script("echo 'No codec.' >&2; exit 3"), "exit status 3 (No codec.)"},
          Case{Script("cp \"$0\" \"$1\"; kill -KILL $$"), "signal 9"},
          Case{Script("true"), "has made no movie"},
          Case{std::make_shared<ProcessExporter>("no-such-program", QStringList{}),
               "the program \"no-such-program\" is not installed"},
          Case{std::make_shared<ProcessExporter>("/no/such/program", QStringList{}),
               "/no/such/program"}}) {
        EXPECT_THAT(Export(exporter), HasSubstr(reason));
        EXPECT_FALSE(std::filesystem::exists(output)) << reason;
    }
}

TEST_F(ReadyExportersTest, KillTheProgramOfACancelledExport) {
    auto const program =
        Script("exec 3> \"$3\"; echo 50%; while :; do read line < \"$0.none\"; done");
    EXPECT_EQ(mkfifo((source.string() + ".none").c_str(), 0600), 0);
    program->SetProgressPattern(QRegularExpression("(\\d+)%"));
    std::ifstream held;
    Begin(program);
    held.open(pipe);
    MainThreadLoop::WaitUntil([this] { return progress == 0.5; });
    run.reset();
    EXPECT_EQ(held.get(), std::ifstream::traits_type::eof()) << "nobody holds its other end";
    EXPECT_FALSE(end.has_value());
}

TEST_F(ReadyExportersTest, EndACopyWhenItIsCancelled) {
    std::string const piece(kPiece, 'm');
    auto const copy =
        std::make_shared<CopyExporter>([this] { return QString::fromStdString(pipe.string()); });
    Begin(copy);
    std::ofstream fed(pipe);
    fed << piece << std::flush;
    MainThreadLoop::WaitUntil([this] { return progress.has_value(); });
    run.reset();
    auto const handler = std::signal(SIGPIPE, SIG_IGN);  // it may have let go of the pipe already
    fed << piece << std::flush;
    std::signal(SIGPIPE, handler);
    EXPECT_TRUE(ExportRun::AwaitExporters(std::chrono::minutes(1))) << "it reads on";
    EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(ReadyExportersTest, SayWhyACopyHasFailed) {
    auto const copy = std::make_shared<CopyExporter>();
    EXPECT_EQ(Export(copy), "");
    EXPECT_EQ(ContentOf(output), "a movie");
    std::filesystem::remove(output);

    std::filesystem::resize_file(source, 2 * kPiece);
    {
        FullDisk const disk(kPiece);
        EXPECT_THAT(Export(copy),
                    testing::AllOf(HasSubstr("Cannot write"), HasSubstr("too large")));
    }
    EXPECT_FALSE(std::filesystem::exists(output));

    std::filesystem::remove(source);
    EXPECT_THAT(Export(copy), testing::AllOf(HasSubstr("Cannot read \"" + source.string() + "\""),
                                             HasSubstr("No such file")));
    EXPECT_FALSE(std::filesystem::exists(output));
}

}  // namespace
}  // namespace quillohostkit
