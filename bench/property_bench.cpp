// What one change of an observable property costs, posted and delivered in batches, beside two
// peers that do the same: a Boost.Signals2 signal emitted from the same main-thread queue, and a Qt
// signal with queued connections. Counts the heap allocations of a property that nobody watches as
// well.

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QObject>
#include <atomic>
#include <boost/signals2/signal.hpp>
#include <cstdlib>
#include <memory>
#include <new>
#include <semaphore>
#include <thread>
#include <vector>

#include "moxcore/threads/AsyncCallFromMainThread.h"
#include "moxcore/threads/MainThread.h"
#include "quillomoxui/properties/NamedPropertyHosts.h"

namespace {

thread_local long allocations = 0;

constexpr int kBatch = 256;

/// Ours.
class Property {
public:
    explicit Property(int receivers) {
        for (int i = 0; i < receivers; ++i)
            handles.push_back(host->BindValueChanged([this](double value) { sum += value; }));
        Deliver();
    }
    void Change(double value) { host->SetEncodingProgress(value); }
    static void Deliver() { moxcore::threads::MainThread::RunPending(); }
    double sum = 0;

private:
    std::shared_ptr<quillomoxui::EncodingProgressNotifyingPropertyHost> host =
        std::make_shared<quillomoxui::EncodingProgressNotifyingPropertyHost>();
    std::vector<std::shared_ptr<quillomoxui::BindingHandle>> handles;
};

/// A value with a Boost signal, emitted on the main thread by way of the same queue.
class BoostSignal {
public:
    explicit BoostSignal(int receivers) {
        for (int i = 0; i < receivers; ++i)
            signal.connect([this](double value) { sum += value; });
    }
    void Change(double value) {
        moxcore::threads::AsyncCallFromMainThread([this, value] { signal(value); }, 0);
    }
    static void Deliver() { moxcore::threads::MainThread::RunPending(); }
    double sum = 0;

private:
    boost::signals2::signal<void(double)> signal;
};

class QtEmitter : public QObject {
    Q_OBJECT
Q_SIGNALS:
    void Changed(double value);
};

class QtReceiver : public QObject {
    Q_OBJECT
public:
    explicit QtReceiver(double& sum) : sum(sum) {}
    Q_SLOT void OnChanged(double value) { sum += value; }

private:
    double& sum;
};

class QtSignal {
public:
    explicit QtSignal(int receivers) {
        for (int i = 0; i < receivers; ++i) {
            auto& receiver = this->receivers.emplace_back(std::make_unique<QtReceiver>(sum));
            QObject::connect(&emitter, &QtEmitter::Changed, receiver.get(), &QtReceiver::OnChanged,
                             Qt::QueuedConnection);
        }
    }
    void Change(double value) { Q_EMIT emitter.Changed(value); }
    static void Deliver() { QCoreApplication::processEvents(); }
    double sum = 0;

private:
    QtEmitter emitter;
    std::vector<std::unique_ptr<QtReceiver>> receivers;
};

template <class Subject>
void ChangeOnMainThread(benchmark::State& state) {
    Subject subject(static_cast<int>(state.range(0)));
    double value = 0;
    for (auto _ : state) {
        for (int i = 0; i < kBatch; ++i)
            subject.Change(value += 1);
        Subject::Deliver();
    }
    benchmark::DoNotOptimize(subject.sum);
    state.SetItemsProcessed(state.iterations() * kBatch);
}

/// The changes are made on another thread; both threads' work counts, one after the other.
template <class Subject>
void ChangeOnOtherThread(benchmark::State& state) {
    Subject subject(static_cast<int>(state.range(0)));
    std::binary_semaphore go{0};
    std::binary_semaphore done{0};
    std::atomic<bool> stop{false};
    std::jthread other([&] {
        double value = 0;
        while (go.acquire(), !stop) {
            for (int i = 0; i < kBatch; ++i)
                subject.Change(value += 1);
            done.release();
        }
    });
    for (auto _ : state) {
        go.release();
        done.acquire();
        Subject::Deliver();
    }
    stop = true;
    go.release();
    state.SetItemsProcessed(state.iterations() * kBatch);
}

void HeapOfUnwatchedProperty(benchmark::State& state) {
    long made = 0;
    for (auto _ : state) {
        long const before = allocations;
        quillomoxui::EncodingProgressNotifyingPropertyHost host;
        benchmark::DoNotOptimize(host);
        made += allocations - before;
    }
    state.counters["allocations"] = static_cast<double>(made);
}

}  // namespace

void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

BENCHMARK(ChangeOnMainThread<Property>)->Arg(4)->Arg(16);
BENCHMARK(ChangeOnMainThread<BoostSignal>)->Arg(4)->Arg(16);
BENCHMARK(ChangeOnMainThread<QtSignal>)->Arg(4)->Arg(16);
BENCHMARK(ChangeOnOtherThread<Property>)->Arg(4)->Arg(16)->UseRealTime();
BENCHMARK(ChangeOnOtherThread<BoostSignal>)->Arg(4)->Arg(16)->UseRealTime();
BENCHMARK(HeapOfUnwatchedProperty);

int main(int argc, char** argv) {
    setenv("QT_NO_GLIB", "1", 1);  // the faster of Qt's event loops
    QCoreApplication application(argc, argv);
    // A process with threads, as every editor is: reference counts are atomic only then.
    std::jthread([] {}).join();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}

#include "property_bench.moc"
