#include "host/process/ProgressDisplay.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cmath>
#include <utility>

#include "host/process/Terminal.h"

namespace quillohost {
namespace {

constexpr std::chrono::milliseconds kBetweenDraws{100};
constexpr int kPercentBetweenLines = 25;
constexpr int kUsualWidth = 80;

int TerminalWidth() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualWidth;
    return size.ws_col - 1;  // a full line would wrap on some terminals
}

}  // namespace

ProgressDisplay::ProgressDisplay() : isTerminal(isatty(STDERR_FILENO) == 1) {}

ProgressDisplay::~ProgressDisplay() {
    End();
}

void ProgressDisplay::Tell(std::string const& line) {
    Clear();
    TellLine(line);
    if (active && isTerminal) Draw(Clock::now());
}

void ProgressDisplay::Begin(std::string const& label, RateText newRateText) {
    End();
    active = true;
    bar = {.label = label};
    rateText = std::move(newRateText);
    rate = {};
    rate.Add(Clock::now(), 0);
    nextPercent = kPercentBetweenLines;
    if (isTerminal)
        Draw(Clock::now());
    else
        TellLine(label);
}

void ProgressDisplay::Update(double fraction) {
    if (!active) return;
    auto const now = Clock::now();
    bar.fraction = fraction;
    rate.Add(now, fraction);
    if (auto const perSecond = rate.PerSecond()) {
        bar.rate = rateText(*perSecond);
        bar.left = std::chrono::seconds(std::lround((1 - fraction) / *perSecond));
    }
    if (isTerminal) {
        if (now - lastDraw >= kBetweenDraws) Draw(now);
    } else if (fraction * 100 >= nextPercent && fraction < 1) {
        nextPercent =
            static_cast<int>(fraction * 100) / kPercentBetweenLines * kPercentBetweenLines +
            kPercentBetweenLines;
        TellLine("  " + bar.Format(kUsualWidth));
    }
}

void ProgressDisplay::End() {
    Clear();
    active = false;
}

void ProgressDisplay::Draw(Clock::time_point now) {
    lastDraw = now;
    drawn = true;
    ShowOverLine(bar.Format(TerminalWidth()));
}

void ProgressDisplay::Clear() {
    if (drawn) WipeLine();
    drawn = false;
}

}  // namespace quillohost
