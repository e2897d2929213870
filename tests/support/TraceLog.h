#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "moxcore/debug/Trace.h"

namespace testsupport {

/// What the library traces in `category`, at `level` and above, while the object lives. Any thread.
class TraceLog {
public:
    explicit TraceLog(int level, std::string const& category = "QuilloNative")
        : category(category) {
        moxcore::debug::SetTraceLevel(category, level);
        moxcore::debug::SetTraceSink([this](int, std::string const&, std::string const& text) {
            std::lock_guard lock(mutex);
            texts.push_back(text);
        });
    }
    ~TraceLog() {
        moxcore::debug::SetTraceSink(nullptr);
        moxcore::debug::SetTraceLevel(category, -1);
    }
    TraceLog(TraceLog const&) = delete;
    TraceLog& operator=(TraceLog const&) = delete;

    /// What was traced since the last call.
    [[nodiscard]] std::vector<std::string> Take() {
        std::lock_guard lock(mutex);
        return std::exchange(texts, {});
    }

private:
    std::string const category;
    std::mutex mutex;
    std::vector<std::string> texts;  // guarded by mutex
};

}  // namespace testsupport
