#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "host/process/ProgressBar.h"
#include "host/process/SlidingRate.h"

namespace quillohost {

/// Tells the user on standard error what is being done: a line for each step, and below the last
/// one a bar while something long goes on. Where standard error is no terminal, the bar is a line
/// now and then. Main thread.
class ProgressDisplay {
public:
    /// The rate in the work's own unit, given the fraction done in a second.
    using RateText = std::function<std::string(double fractionPerSecond)>;

    ProgressDisplay();
    ~ProgressDisplay();
    ProgressDisplay(ProgressDisplay const&) = delete;
    ProgressDisplay& operator=(ProgressDisplay const&) = delete;

    /// A line of its own.
    void Tell(std::string const& line);

    /// The next thing that takes its time; replaces the bar before.
    void Begin(std::string const& label, RateText rateText);
    /// How far that is, 0 to 1. Nothing happens when there is none.
    void Update(double fraction);
    /// Takes the bar away.
    void End();

private:
    using Clock = std::chrono::steady_clock;

    void Draw(Clock::time_point now);
    void Clear();

    bool const isTerminal;
    bool active = false;
    bool drawn = false;  // the bar stands on the terminal
    ProgressBar bar;
    RateText rateText;
    SlidingRate rate;
    Clock::time_point lastDraw;
    int nextPercent = 0;  // of the next line, where there is no terminal
};

}  // namespace quillohost
