// What the location picker costs on large accounts, on a tree that is in memory already: until its
// step is on the screen, per page scrolled, until all rows of a project's folders are there. Beside
// the time of the whole stands, as longest_ms, the longest time for which the event loop was held
// up at once: a frame takes 16 ms.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QKeyEvent>
#include <algorithm>
#include <ctime>
#include <string>

#include "moxcore/threads/MainThread.h"
#include "moxui/controls/UI_MultiColumnTree.h"
#include "moxui/controls/UI_ScrollView.h"
#include "quillomoxui/view/Factory.h"
#include "quillomoxui/view/LocationPickerView.h"
#include "quillomoxui/viewmodel/ShareForReviewViewModel.h"
#include "tests/quillomoxui/view/Locations.h"
#include "tests/support/TestWindow.h"
#include "tests/support/Views.h"

namespace {

using namespace quillomoxui;
using moxcore::threads::MainThread;
using moxui::controls::UI_MultiColumnTree;
using moxui::controls::UI_ScrollView;

/// Runs the event loop as a host does, and measures the longest time of one turn.
class Loop {
public:
    template <class Function>
    void Time(Function const& function) {
        auto const start = Milliseconds();
        function();
        longest = std::max(longest, Milliseconds() - start);
    }
    void Run() {
        std::size_t ran = 0;
        do {
            Time([] { QCoreApplication::processEvents(); });
            Time([] { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); });
            Time([&] { ran = MainThread::RunPending(); });
        } while (ran > 0);
    }
    [[nodiscard]] double LongestMilliseconds() const { return longest; }

private:
    /// This thread's own time: a machine that does other things as well adds nothing to it.
    static double Milliseconds() {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    }

    double longest = 0;
};

/// A picker over one account, in a window.
class Picker {
public:
    Picker() {
        model->SetUser(user);
        account = MakeNode<QuilloAccount>("Account", user);
        user->SetAccounts({account});
    }

    void Open(ShareForReviewViewID id) {
        model->SetCurrentViewID(id);
        view = view::factory::CreateView(id, model);
        auto const size = view->UI_GetRecommendedSize(nullptr);
        window.Container().ChildPushBack(view);
        view->UI_SetLocalRectF({0, 0, size.x, size.y});
        view->UI_Show(true);
    }
    void Close() {
        window.Container().ChildRemoveAll();
        view.reset();
    }

    std::shared_ptr<ShareForReviewViewModel> model = std::make_shared<ShareForReviewViewModel>();
    std::shared_ptr<QuilloUser> user = std::make_shared<QuilloUser>();
    std::shared_ptr<QuilloAccount> account;
    testsupport::TestWindow window{340, 392};
    boost::intrusive_ptr<view::PopupBaseView> view;
    Loop loop;
};

std::vector<std::string> Names(std::string const& stem, std::int64_t count) {
    std::vector<std::string> names;
    for (std::int64_t i = 0; i < count; ++i)
        names.push_back(stem + " " + std::to_string(i));
    return names;
}

/// Projects in so many workspaces.
void FillProjects(Picker& picker, std::int64_t projects, std::int64_t workspaces) {
    for (auto const& workspace : ReceiveWorkspaces(picker.account, Names("Workspace", workspaces)))
        ReceiveProjects(workspace, Names("Project", projects / workspaces));
    picker.loop.Run();
}

void OpenProjects(benchmark::State& state) {
    Picker picker;
    FillProjects(picker, state.range(0), state.range(1));
    for (auto _ : state) {
        picker.Open(ShareForReviewViewID::SelectProject);
        picker.loop.Run();
        state.PauseTiming();
        picker.Close();
        picker.loop.Run();
        state.ResumeTiming();
    }
}
BENCHMARK(OpenProjects)
    ->Args({20, 2})
    ->Args({2000, 1})
    ->Args({2000, 50})
    ->Args({2000, 2000})
    ->Unit(benchmark::kMillisecond);

/// One page down, until it is drawn.
void ScrollProjects(benchmark::State& state) {
    Picker picker;
    FillProjects(picker, state.range(0), 1);
    picker.Open(ShareForReviewViewID::SelectProject);
    picker.loop.Run();
    auto const list = testsupport::Find<UI_ScrollView>(*picker.view);
    Loop loop;
    float y = 0;
    for (auto _ : state) {
        y += 240;
        list->SetScrollPosition({0, y});
        if (list->GetScrollPosition().y < y) y = 0;
        loop.Run();
    }
    state.counters["longest_ms"] = loop.LongestMilliseconds();
}
BENCHMARK(ScrollProjects)->Arg(2000)->Unit(benchmark::kMillisecond);

/// One press of Down in the list.
void WalkProjects(benchmark::State& state) {
    Picker picker;
    FillProjects(picker, state.range(0), 1);
    picker.Open(ShareForReviewViewID::SelectProject);
    picker.loop.Run();
    testsupport::Find<view::ProjectListItem>(*picker.view)->UI_SetFocus();
    Loop loop;
    for (auto _ : state) {
        QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
        loop.Time([&] { QCoreApplication::sendEvent(QApplication::focusWidget(), &down); });
        loop.Run();
    }
    state.counters["longest_ms"] = loop.LongestMilliseconds();
}
BENCHMARK(WalkProjects)->Arg(2000)->Unit(benchmark::kMillisecond);

/// A project's folders, ten in each, level by level.
NodeVector<QuilloFolder> FillFolders(std::shared_ptr<QuilloFolder> const& root,
                                     std::int64_t count) {
    NodeVector<QuilloFolder> all{root};
    for (std::size_t i = 0; static_cast<std::int64_t>(all.size()) < count; ++i) {
        auto const folders = Receive(all[i], Names("Folder " + std::to_string(i), 10));
        all.insert(all.end(), folders.begin(), folders.end());
    }
    return all;
}

std::shared_ptr<QuilloFolder> ProposeProject(Picker& picker) {
    FillProjects(picker, 1, 1);
    auto const root =
        picker.account->GetWorkspaces().front()->GetProjects().front()->GetRootFolder();
    picker.user->SetProposedSelection(root);
    return root;
}

/// Until all rows of folders that were fetched before are there.
void BuildTree(benchmark::State& state) {
    Picker picker;
    FillFolders(ProposeProject(picker), state.range(0));
    picker.loop.Run();
    Loop loop;
    for (auto _ : state) {
        loop.Time([&] { picker.Open(ShareForReviewViewID::SelectFolder); });
        loop.Run();
        state.PauseTiming();
        picker.Close();
        picker.loop.Run();
        state.ResumeTiming();
    }
    state.SetComplexityN(state.range(0));
    state.counters["longest_ms"] = loop.LongestMilliseconds();
}
BENCHMARK(BuildTree)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Complexity(benchmark::oN)
    ->Unit(benchmark::kMillisecond);

/// A thousand lists come at once, ten folders in each.
void BurstOfLists(benchmark::State& state) {
    Picker picker;
    Loop loop;
    for (auto _ : state) {
        state.PauseTiming();
        auto const root = ProposeProject(picker);
        auto const folders = Receive(root, Names("Folder", state.range(0)));
        picker.Open(ShareForReviewViewID::SelectFolder);
        picker.loop.Run();
        for (std::size_t i = 0; i < folders.size(); ++i)
            Receive(folders[i], Names("Folder " + std::to_string(i), 10));
        state.ResumeTiming();
        loop.Run();
        state.PauseTiming();
        picker.Close();
        picker.loop.Run();
        state.ResumeTiming();
    }
    state.counters["longest_ms"] = loop.LongestMilliseconds();
}
BENCHMARK(BurstOfLists)->Arg(1000)->Unit(benchmark::kMillisecond);

/// A list of so many folders is fetched again, with new folders of the same IDs; with one more in
/// the second case, for which all rows are made anew.
void Refetch(benchmark::State& state) {
    Picker picker;
    auto const root = ProposeProject(picker);
    Receive(root, Names("Folder", state.range(0)));
    picker.Open(ShareForReviewViewID::SelectFolder);
    picker.loop.Run();
    Loop loop;
    std::int64_t count = state.range(0);
    for (auto _ : state) {
        state.PauseTiming();
        // Sorted before the others, and so between the rows that there are.
        auto names = Names("Folder", state.range(0));
        if (state.range(1)) names.push_back("A " + std::to_string(++count));
        Receive(root, names);
        state.ResumeTiming();
        loop.Run();
    }
    state.counters["longest_ms"] = loop.LongestMilliseconds();
}
BENCHMARK(Refetch)->Args({10000, 0})->Args({10000, 1})->Unit(benchmark::kMillisecond);

/// The key that opens all below a row is held on a tree of so many folders.
void HoldAsterisk(benchmark::State& state) {
    Picker picker;
    FillFolders(ProposeProject(picker), state.range(0));
    Loop loop;
    for (auto _ : state) {
        state.PauseTiming();
        picker.Open(ShareForReviewViewID::SelectFolder);
        picker.loop.Run();
        auto const tree = testsupport::Find<UI_MultiColumnTree>(*picker.view);
        auto& widget = testsupport::WidgetOf(*tree);
        state.ResumeTiming();
        for (int i = 0; i < 30; ++i) {
            QKeyEvent star(QEvent::KeyPress, Qt::Key_Asterisk, Qt::NoModifier, "*", i > 0);
            loop.Time([&] { QCoreApplication::sendEvent(&widget, &star); });
            loop.Time([] { QCoreApplication::processEvents(); });
        }
        loop.Run();
        state.PauseTiming();
        picker.Close();
        picker.loop.Run();
        state.ResumeTiming();
    }
    state.counters["longest_ms"] = loop.LongestMilliseconds();
}
BENCHMARK(HoldAsterisk)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argumentCount, char** arguments) {
    qputenv("QT_NO_GLIB", "1");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argumentCount, arguments);
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
