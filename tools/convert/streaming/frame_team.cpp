#include "tools/convert/streaming/frame_team.h"

#include <algorithm>

namespace quorvex::tools {

void FrameTeam::MakeOne(Job& job, std::unique_lock<std::mutex>& lock) {
    const int frame = job.next++;
    ++job.making;
    lock.unlock();
    std::exception_ptr failure;
    try {
        job.make(frame);
    } catch (...) {
        failure = std::current_exception();
    }
    lock.lock();
    --job.making;
    if (failure && !job.failure) job.failure = failure;
    job.isMade[static_cast<std::size_t>(frame % Window())] = true;
    changed_.notify_all();
}

void FrameTeam::TakeOne(Job& job, const std::function<void(int)>& take,
                        std::unique_lock<std::mutex>& lock) {
    lock.unlock();
    std::exception_ptr failure;
    try {
        take(job.taken);
    } catch (...) {
        failure = std::current_exception();
    }
    lock.lock();
    if (failure && !job.failure) job.failure = failure;
    job.isMade[static_cast<std::size_t>(job.taken % Window())] = false;
    ++job.taken;
    changed_.notify_all();
}

void FrameTeam::Run(int count, const std::function<void(int)>& make,
                    const std::function<void(int)>& take) {
    Job job{.count = count,
            .make = make,
            .isMade = std::vector<bool>(static_cast<std::size_t>(Window()))};
    std::unique_lock lock(mutex_);
    jobs_.push_back(&job);
    changed_.notify_all();
    while (!job.failure && job.taken < count) {
        if (job.isMade[static_cast<std::size_t>(job.taken % Window())]) {
            TakeOne(job, take, lock);
        } else if (HasWork(job)) {
            MakeOne(job, lock);
        } else {
            changed_.wait(lock);
        }
    }
    changed_.wait(lock, [&] { return job.making == 0; });
    jobs_.remove(&job);
    if (job.failure) std::rethrow_exception(job.failure);
}

void FrameTeam::Help() {
    std::unique_lock lock(mutex_);
    --withFiles_;
    changed_.notify_all();
    while (withFiles_ > 0) {
        const auto job = std::ranges::find_if(jobs_, [&](const Job* one) { return HasWork(*one); });
        if (job == jobs_.end()) {
            changed_.wait(lock);
        } else {
            MakeOne(**job, lock);
        }
    }
}

}  // namespace quorvex::tools
