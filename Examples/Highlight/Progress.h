#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace highlight {

/// A line on the standard error stream that tells what takes so long, for work of more than a second and on
/// terminals alone. It is gone before anything else is written.
class Progress {
public:
    /// Of one file, and what is done first.
    Progress(std::string file, std::string step);
    /// Takes the line away.
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    /// What is done from now on.
    void setStep(std::string step);

private:
    void run();

    const std::string _file;
    std::mutex _mutex;
    std::condition_variable _changed;
    std::string _step;
    bool _isOver = false;
    /// Not running where the stream is no terminal.
    std::thread _thread;
};

} // namespace highlight
