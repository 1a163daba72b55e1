#include "Progress.h"

#include <chrono>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace highlight {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds patience(1000);
constexpr std::chrono::milliseconds pace(100);

/// As wide as a terminal that doesn't tell its width can be trusted to be.
constexpr std::size_t usualWidth = 80;

std::size_t widthOfTerminal() {
    struct winsize size {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usualWidth;
}

/// Held to one line, for two could not be taken back; the start of a long name says least.
std::string fitted(const std::string &file, const std::string &rest) {
    const std::size_t room = widthOfTerminal() - 1;
    if (file.size() + rest.size() <= room)
        return file + rest;
    const std::size_t kept = room > rest.size() + 3 ? room - rest.size() - 3 : 0;
    return ("..." + file.substr(file.size() - std::min(kept, file.size())) + rest).substr(0, room);
}

} // namespace

Progress::Progress(std::string file, std::string step) : _file(std::move(file)), _step(std::move(step)) {
    if (isatty(STDERR_FILENO) != 0)
        _thread = std::thread([this] { run(); });
}

Progress::~Progress() {
    if (!_thread.joinable())
        return;
    {
        const std::lock_guard guard(_mutex);
        _isOver = true;
    }
    _changed.notify_one();
    _thread.join();
}

void Progress::setStep(std::string step) {
    const std::lock_guard guard(_mutex);
    _step = std::move(step);
}

void Progress::run() {
    const Clock::time_point start = Clock::now();
    std::unique_lock guard(_mutex);
    if (_changed.wait_until(guard, start + patience, [this] { return _isOver; }))
        return;
    do {
        const std::chrono::duration<double> elapsed = Clock::now() - start;
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, ", %.1f s", elapsed.count());
        std::fprintf(stderr, "\r%s\x1b[K", fitted(_file, ": " + _step + seconds).c_str());
        std::fflush(stderr);
    } while (!_changed.wait_for(guard, pace, [this] { return _isOver; }));
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
}

} // namespace highlight
