#include "quillohostkit/ProcessExporter.h"

#include <QFile>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include "moxcore/config/Localizer.h"
#include "quillohostkit/process/ChildProcess.h"
#include "quillohostkit/process/Failure.h"

namespace quillohostkit {

using moxcore::config::Text;
namespace {

/// One run of the program; the job's handler for cancellation holds it. Main thread.
class ProgramRun : public std::enable_shared_from_this<ProgramRun> {
public:
    ProgramRun(ExportJob newJob, QString newProgram, QRegularExpression newPattern)
        : job(std::move(newJob)), program(std::move(newProgram)), pattern(std::move(newPattern)) {}

    void Start(std::vector<std::string> const& arguments) {
        job.FinishLater();
        auto file = std::filesystem::path(QFile::encodeName(program).toStdString());
        if (!file.has_parent_path()) file = FindProgram(file.string());
        if (file.empty())
            throw Failure(FailureKind::Export,
                          Text("$$$/Vistrel/quillohostkit/Export/NoProgram=Cannot export: the "
                               "program \"{program}\" is not installed.",
                               {{"program", program.toStdString()}}));
        process = std::make_unique<ChildProcess>(
            file, arguments, ChildProcess::Input::Nothing,
            ChildProcess::Hooks{.onOutput = [this](auto const& line) { Read(line); },
                                .onError =
                                    [this](auto const& line) {
                                        Read(line);
                                        if (!line.empty()) lastError = line;
                                    },
                                .onExit = [this](auto status) { OnExit(status); }});
        job.OnCancelled([self = shared_from_this()] { self->process.reset(); });
    }

private:
    void Read(std::string const& line) const {
        if (pattern.pattern().isEmpty()) return;
        auto const match = pattern.match(QString::fromStdString(line));
        if (!match.hasMatch()) return;
        double const whole = match.lastCapturedIndex() >= 2 ? match.captured(2).toDouble() : 100;
        if (whole > 0) job.SetProgress(match.captured(1).toDouble() / whole);
    }

    void OnExit(ExitStatus status) {
        auto const self = shared_from_this();  // the job's end lets go of it
        if (status.IsSuccess()) return job.Finish();
        bool const isKilled = status.signal != 0;
        auto const said = lastError.empty() ? "" : " (" + lastError + ")";
        job.Fail(QString::fromStdString(
            Text(isKilled ? "$$$/Vistrel/quillohostkit/Export/Killed=Cannot export: \"{program}\" "
                            "has ended with signal {number}{said}."
                          : "$$$/Vistrel/quillohostkit/Export/Status=Cannot export: \"{program}\" "
                            "has ended with exit status {number}{said}.",
                 {{"program", program.toStdString()},
                  {"number", std::to_string(isKilled ? status.signal : status.code)},
                  {"said", said}})));
    }

    ExportJob const job;
    QString const program;
    QRegularExpression const pattern;
    std::string lastError;
    std::unique_ptr<ChildProcess> process;
};

/// `word` with the job's values in the places of their names.
QString FillIn(QString const& word, ExportJob const& job) {
    static QRegularExpression const names("\\{(output|path|title)\\}");
    QString filled;
    qsizetype end = 0;
    for (auto matches = names.globalMatch(word); matches.hasNext();) {
        auto const match = matches.next();
        auto const name = match.captured(1);
        filled += word.mid(end, match.capturedStart() - end);
        filled += name == "output" ? job.OutputFile()
                  : name == "path" ? job.GetAsset().path
                                   : job.GetAsset().title;
        end = match.capturedEnd();
    }
    return filled + word.mid(end);
}

}  // namespace

ProcessExporter::ProcessExporter(QString newProgram, QStringList newArguments)
    : program(std::move(newProgram)), arguments(std::move(newArguments)) {}

void ProcessExporter::SetProgressPattern(QRegularExpression newPattern) {
    pattern = std::move(newPattern);
}

void ProcessExporter::Export(ExportJob& job) {
    std::vector<std::string> words;
    for (auto const& word : arguments)
        words.push_back(QFile::encodeName(FillIn(word, job)).toStdString());
    std::make_shared<ProgramRun>(job, program, pattern)->Start(words);
}

Exporter::Thread ProcessExporter::GetThread() const {
    return Thread::Main;
}

}  // namespace quillohostkit
