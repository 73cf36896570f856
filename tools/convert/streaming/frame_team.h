/// The command's threads, at work on the frames of one file.
#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <list>
#include <mutex>
#include <vector>

namespace quorvex::tools {

/// Threads that have files of their own work on those; who has none left helps the others, frame by
/// frame.
class FrameTeam {
public:
    explicit FrameTeam(unsigned workers) : workers_(workers), withFiles_(workers) {}

    /// Makes every frame, on this thread and on those that help, and takes each in its order on
    /// this one. Never more than Window() frames are made and not taken. What either throws ends
    /// the work, and is thrown here once nobody makes a frame any more.
    void Run(int count, const std::function<void(int)>& make, const std::function<void(int)>& take);
    [[nodiscard]] int Window() const noexcept {
        return workers_ == 1 ? 1 : static_cast<int>(2 * workers_);
    }

    /// This thread has no file left: it makes frames for the others until none of them has one.
    void Help();

private:
    struct Job {
        int count;
        const std::function<void(int)>& make;
        std::vector<bool> isMade;  ///< by frame modulo window
        int next = 0;              ///< to be made
        int taken = 0;
        int making = 0;
        std::exception_ptr failure = {};
    };

    [[nodiscard]] bool HasWork(const Job& job) const noexcept {
        return !job.failure && job.next < job.count && job.next < job.taken + Window();
    }
    void MakeOne(Job& job, std::unique_lock<std::mutex>& lock);
    void TakeOne(Job& job, const std::function<void(int)>& take,
                 std::unique_lock<std::mutex>& lock);

    unsigned workers_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::list<Job*> jobs_;
    unsigned withFiles_;
};

}  // namespace quorvex::tools
