// What it costs to fetch a location tree: requests paced by the queue, answers read, nodes made,
// sorted and announced. Beside it the least that any client would have to do with the same answers:
// read them with the same parser, and sort the names of each list by collation keys that are there
// already.
//
// Subjects are the tree that "quillo-service --sample large" serves, fetched once from the real
// program and then answered from memory, and single folders with a growing number of children.

#include <benchmark/benchmark.h>
#include <simdjson.h>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/Playback.h"
#include "moxcore/filesupport/CommonDirs.h"
#include "moxcore/string/Conversions.h"
#include "quillocommon/ServiceAddress.h"
#include "quillomoxui/model/ChildNodes.h"
#include "quillomoxui/model/sdk/SdkNodes.h"
#include "quillosdk/Transport.h"
#include "tests/support/DrainMainThread.h"
#include "tests/support/ManualExecutor.h"
#include "tests/support/ServiceProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace quillomoxui;
using Sdk = model::QuilloCppSdkIntegration;
using bench::Player;
using bench::Recorded;
using bench::Recorder;
using bench::Recording;
using bench::Require;

/// Collects the root folders below `node`.
void CollectRootFolders(std::shared_ptr<QuilloNode> const& node,
                        NodeVector<QuilloFolder>& folders) {
    for (auto const& child : node->GetChildNodes()) {
        if (auto folder = std::dynamic_pointer_cast<QuilloFolder>(child))
            folders.push_back(std::move(folder));
        else
            CollectRootFolders(child, folders);
    }
}

/// Fetches all that lies below `folders`, level by level.
void FetchFolders(testsupport::ManualExecutor& executor, NodeVector<QuilloFolder> folders) {
    while (!folders.empty()) {
        for (auto const& folder : folders)
            folder->FetchChildren();
        executor.RunDue();
        NodeVector<QuilloFolder> below;
        for (auto const& folder : folders) {
            auto const children = folder->GetFolders();
            below.insert(below.end(), children.begin(), children.end());
        }
        folders = std::move(below);
    }
}

/// Fetches the whole tree of the signed-in user.
std::shared_ptr<QuilloUser> FetchTree(testsupport::ManualExecutor& executor) {
    std::shared_ptr<QuilloUser> user;
    Sdk::GetCurrentUser([&](std::shared_ptr<QuilloUser> const& received) { user = received; });
    Require(user != nullptr, "the service did not say who is signed in");
    user->FetchChildren();
    executor.RunDue();
    NodeVector<QuilloFolder> folders;
    CollectRootFolders(user, folders);
    FetchFolders(executor, std::move(folders));
    testsupport::DrainMainThread();
    return user;
}

std::size_t CountNodes(std::shared_ptr<QuilloNode> const& node) {
    std::size_t count = 1;
    for (auto const& child : node->GetChildNodes())
        count += CountNodes(child);
    return count;
}

void SignIn() {
    auto const signedIn = std::make_shared<std::promise<bool>>();
    auto const isTold = std::make_shared<bool>(false);
    Sdk::SignIn([=](bool loggedIn) {
        if (!std::exchange(*isTold, true)) signedIn->set_value(loggedIn);
    });
    Require(signedIn->get_future().get(), "could not sign in");
}

/// The answers that make up the sample's tree, from the real service.
Recording RecordSample() {
    testsupport::TemporaryDirectory directory;
    testsupport::ServiceProcess service(directory.Path() / "service",
                                        {"--sample", "large", "--limit", "1000000/1"});
    quillocommon::SetServiceAddress(service.Address());
    moxcore::filesupport::commondirs::SetUserRoot(directory.Text());
    InitQuilloCppSdk(moxcore::string::AsciiToUTF16("bench"),
                     moxcore::string::AsciiToUTF16("none:"));
    SignIn();

    Recording recording;
    testsupport::ManualExecutor executor;
    quillosdk::Transport::Set(std::make_shared<Recorder>(quillosdk::Transport::Get(), recording));
    auto const user = FetchTree(executor);
    quillosdk::Transport::Set(nullptr);
    std::fprintf(stderr, "tree_bench: recorded %zu answers for a tree of %zu nodes\n",
                 recording.size(), CountNodes(user));
    return recording;
}

/// One answer that lists `count` children, folders and files in turn.
std::string MakeListing(std::size_t count) {
    std::string listing = R"({"assets":[)";
    for (std::size_t i = 0; i < count; ++i) {
        char record[160];
        std::snprintf(
            record, sizeof record,
            R"(%s{"id":"%08zx-1111-4222-8333-444455556666","name":"Shot %zu take %zu","type":"%s"})",
            i ? "," : "", i + 1, i * 7919 % count, i % 13, i % 2 ? "file" : "folder");
        listing += record;
    }
    return listing + "]}";
}

/// The least work on `answers`: read every text of every record, then sort each list's names by
/// their keys, which are made beforehand.
class LeastWork {
public:
    explicit LeastWork(Recording const& answers) {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::Collator> const collator(
            icu::Collator::createInstance(icu::Locale::getRoot(), status));
        collator->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status);
        collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        Require(U_SUCCESS(status), "no collator");
        for (auto const& answer : answers) {
            bodies.push_back(&answer.body);
            auto& list = keys.emplace_back();
            ForEachName(answer.body, [&](std::string_view name) {
                auto const text = icu::UnicodeString::fromUTF8(
                    icu::StringPiece(name.data(), static_cast<std::int32_t>(name.size())));
                std::string key(static_cast<std::size_t>(collator->getSortKey(text, nullptr, 0)),
                                0);
                collator->getSortKey(text, reinterpret_cast<std::uint8_t*>(key.data()),
                                     static_cast<std::int32_t>(key.size()));
                list.push_back(std::move(key));
            });
        }
    }

    void Run() {
        for (std::size_t i = 0; i < bodies.size(); ++i) {
            std::size_t bytes = 0;
            ForEachName(*bodies[i], [&](std::string_view name) { bytes += name.size(); });
            benchmark::DoNotOptimize(bytes);
            std::vector<std::string const*> order;
            order.reserve(keys[i].size());
            for (auto const& key : keys[i])
                order.push_back(&key);
            std::sort(order.begin(), order.end(), [](std::string const* a, std::string const* b) {
                int const compared =
                    std::memcmp(a->data(), b->data(), std::min(a->size(), b->size()));
                return compared ? compared < 0 : a->size() < b->size();
            });
            benchmark::DoNotOptimize(order.data());
        }
    }

private:
    /// Reads all members of all records of the one list in `body`.
    template <class OnName>
    void ForEachName(std::string const& body, OnName onName) {
        padded.assign(body);
        padded.reserve(body.size() + simdjson::SIMDJSON_PADDING);
        auto document = parser.iterate(padded.data(), padded.size(), padded.capacity());
        for (auto list : document.get_object()) {
            simdjson::ondemand::array records;
            if (list.value().get_array().get(records)) continue;  // the user's own record
            for (auto record : records)
                ReadRecord(record.get_object(), onName);
        }
    }

    template <class OnName>
    static void ReadRecord(simdjson::ondemand::object record, OnName const& onName) {
        for (auto member : record) {
            std::string_view const name = member.unescaped_key();
            simdjson::ondemand::value value = member.value();
            std::string_view text;
            if (value.get_string().get(text)) {
                for (auto inner : value.get_object()) {  // a root folder
                    std::string_view innerText;
                    if (!inner.value().get_string().get(innerText))
                        benchmark::DoNotOptimize(innerText);
                }
                continue;
            }
            benchmark::DoNotOptimize(text);
            if (name == "name") onName(text);
        }
    }

    simdjson::ondemand::parser parser;
    std::string padded;
    std::vector<std::string const*> bodies;
    std::vector<std::vector<std::string>> keys;  // of the names of each body's list
};

Recording const& Sample() {
    static Recording const sample = RecordSample();
    return sample;
}

void SampleTree(benchmark::State& state) {
    auto const player = std::make_shared<Player>(Sample());
    quillosdk::Transport::Set(player);
    testsupport::ManualExecutor executor;
    std::size_t nodes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        player->Rewind();
        state.ResumeTiming();
        auto user = FetchTree(executor);
        state.PauseTiming();  // giving the tree up again is not part of fetching it
        nodes = CountNodes(user);
        user.reset();
        state.ResumeTiming();
    }
    quillosdk::Transport::Set(nullptr);
    state.counters["nodes"] = static_cast<double>(nodes);
}

/// The records of the folders below `node`, one list for each node that has some.
void CollectRecords(std::shared_ptr<QuilloNode> const& node,
                    std::vector<std::vector<quillosdk::Asset>>& lists) {
    std::vector<quillosdk::Asset> records;
    for (auto const& child : node->GetChildNodes()) {
        CollectRecords(child, lists);
        if (std::dynamic_pointer_cast<QuilloFolder>(child))
            records.push_back({quillocommon::Guid(child->GetID().AsStdString()),
                               moxcore::string::UTF16to8(child->GetName()), "folder"});
    }
    if (!records.empty()) lists.push_back(std::move(records));
}

/// What would be left of SampleTree if all requests and their answers cost nothing: the folders'
/// nodes made and each list of them sorted.
void SampleTreeNodesAlone(benchmark::State& state) {
    std::vector<std::vector<quillosdk::Asset>> lists;
    {
        auto const player = std::make_shared<Player>(Sample());
        player->Rewind();
        quillosdk::Transport::Set(player);
        testsupport::ManualExecutor executor;
        CollectRecords(FetchTree(executor), lists);
        quillosdk::Transport::Set(nullptr);
    }
    std::vector<NodeVector<QuilloFolder>> kept;
    kept.reserve(lists.size());
    for (auto _ : state) {
        for (auto const& records : lists) {
            NodeVector<QuilloFolder> folders;
            folders.reserve(records.size());
            for (auto const& record : records)
                folders.push_back(std::make_shared<Sdk::QuilloSdkFolder>(record, nullptr));
            kept.push_back(SortNodes(folders));
        }
        state.PauseTiming();
        kept.clear();
        state.ResumeTiming();
    }
}

void SampleTreeLeastWork(benchmark::State& state) {
    LeastWork leastWork(Sample());
    for (auto _ : state)
        leastWork.Run();
}

quillosdk::Asset const kFolder{quillocommon::Guid("00000000-1111-4222-8333-444455556666"), "f",
                               "folder"};

Recording OneListing(benchmark::State const& state) {
    return {
        {quillocommon::GetServiceAddress() + "/v1/folders/" + kFolder.id->AsString() + "/children",
         MakeListing(static_cast<std::size_t>(state.range(0)))}};
}

void Siblings(benchmark::State& state) {
    Sample();  // signs in
    auto const recording = OneListing(state);
    auto const player = std::make_shared<Player>(recording);
    quillosdk::Transport::Set(player);
    testsupport::ManualExecutor executor;
    for (auto _ : state) {
        state.PauseTiming();
        player->Rewind();
        state.ResumeTiming();
        auto folder = std::make_shared<Sdk::QuilloSdkFolder>(kFolder, nullptr);
        folder->FetchChildren();
        executor.RunDue();
        testsupport::DrainMainThread();
        Require(folder->GetFetchChildrenState() == FetchChildrenState::Fetched, "not fetched");
        state.PauseTiming();
        folder.reset();
        state.ResumeTiming();
    }
    quillosdk::Transport::Set(nullptr);
    state.SetComplexityN(state.range(0));
}

void SiblingsLeastWork(benchmark::State& state) {
    auto const recording = OneListing(state);
    LeastWork leastWork(recording);
    for (auto _ : state)
        leastWork.Run();
    state.SetComplexityN(state.range(0));
}

}  // namespace

BENCHMARK(SampleTree)->Unit(benchmark::kMillisecond);
BENCHMARK(SampleTreeNodesAlone)->Unit(benchmark::kMillisecond);
BENCHMARK(SampleTreeLeastWork)->Unit(benchmark::kMillisecond);
BENCHMARK(Siblings)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();
BENCHMARK(SiblingsLeastWork)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

BENCHMARK_MAIN();
