#include "moxcore/debug/Trace.h"

#include <atomic>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string_view>

#include "moxcore/utility/NoDestructor.h"

namespace moxcore::debug {
namespace {

void WriteToStandardError(int level, std::string const& category, std::string const& text) {
    // One write for the whole text, so that it stays together beside other writers.
    std::string line = category + ":" + std::to_string(level) + " " + text;
    if (line.back() != '\n') line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

class Channel {
public:
    Channel() {
        // Asked once, before any thread of ours could change the environment.
        char const* wanted = std::getenv("MOXCORE_TRACE");  // NOLINT(concurrency-mt-unsafe)
        if (wanted) SetLevels(wanted);
    }

    unsigned ChangeCount() const { return changes.load(std::memory_order_acquire); }

    bool Enabled(std::string_view category, int level) {
        if (level > highestLevel.load(std::memory_order_relaxed)) return false;
        std::lock_guard lock(mutex);
        auto const found = levels.find(category);
        return found != levels.end() && level <= found->second;
    }

    void SetLevel(std::string const& category, int level) {
        std::lock_guard lock(mutex);
        levels.insert_or_assign(category, level);
        int highest = -1;
        for (auto const& entry : levels)
            highest = std::max(highest, entry.second);
        highestLevel.store(highest, std::memory_order_relaxed);
        changes.fetch_add(1, std::memory_order_release);
    }

    void SetSink(TraceSink newSink) {
        std::lock_guard lock(sinkMutex);
        sink = newSink ? std::move(newSink) : WriteToStandardError;
    }

    void Write(int level, std::string const& category, std::string const& text) {
        std::lock_guard lock(sinkMutex);
        try {
            sink(level, category, text);
        } catch (...) {  // who traces is not to fail because the text finds no taker
        }
    }

private:
    /// Takes "Category:level[,Category:level...]" and complains about what is malformed.
    void SetLevels(std::string_view entries) {
        while (!entries.empty()) {
            auto const entry = entries.substr(0, entries.find(','));
            entries.remove_prefix(std::min(entries.size(), entry.size() + 1));
            auto const colon = entry.rfind(':');
            int level = 0;
            auto const* end = entry.data() + entry.size();
            bool const wellFormed =
                colon != 0 && colon != std::string_view::npos &&
                std::from_chars(entry.data() + colon + 1, end, level).ptr == end &&
                colon + 1 != entry.size();
            if (wellFormed)
                SetLevel(std::string(entry.substr(0, colon)), level);
            else
                Write(0, "moxcore",
                      "MOXCORE_TRACE: \"" + std::string(entry) +
                          "\" ignored; each entry must read Category:level, as QuilloNative:5");
        }
    }

    std::mutex mutex;
    std::map<std::string, int, std::less<>> levels;  // guarded by mutex
    std::atomic<int> highestLevel{-1};  // of `levels`, so that a silent channel costs no lock
    std::atomic<unsigned> changes{0};

    std::mutex sinkMutex;
    TraceSink sink = WriteToStandardError;  // guarded by sinkMutex, which is held while it runs
};

/// Never destroyed: texts are still traced while the process ends.
Channel& TheChannel() {
    static moxcore::utility::NoDestructor<Channel> channel;
    return *channel;
}

}  // namespace

unsigned TraceChangeCount() {
    return TheChannel().ChangeCount();
}

bool TraceEnabled(char const* category, int level, unsigned flags) {
    return (flags & 1) != 0 && TheChannel().Enabled(category, level);
}

void Trace(int level, char const* category, std::string const& text) {
    if (TheChannel().Enabled(category, level)) TheChannel().Write(level, category, text);
}

void SetTraceLevel(std::string const& category, int level) {
    TheChannel().SetLevel(category, level);
}

void SetTraceSink(TraceSink sink) {
    TheChannel().SetSink(std::move(sink));
}

}  // namespace moxcore::debug
