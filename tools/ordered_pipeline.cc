#include "tools/ordered_pipeline.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#ifndef _WIN32
#include <csignal>
#endif

namespace geomath_files::program {
namespace {

// While it lives, new threads take no signals.
class SignalsHeld {
 public:
#ifdef _WIN32
  SignalsHeld() {}
#else
  SignalsHeld() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
#endif
};

class Pipeline {
 public:
  Pipeline(std::size_t jobs, const PipelineStages& stages)
      : stages_(stages), worked_(PipelinePlaces(jobs), false) {
    const SignalsHeld held;
    try {
      while (workers_.size() < jobs) workers_.emplace_back([this] { Work(); });
    } catch (const std::system_error&) {  // no more threads are to be had
    }
  }

  bool HasWorkers() const { return !workers_.empty(); }

  void Run() {
    std::exception_ptr trouble;
    try {
      while (AwaitPlace() && stages_.read(PlaceOf(read_))) {
        const std::lock_guard lock(mutex_);
        ++read_;
        wake_.notify_one();
      }
    } catch (...) {
      trouble = std::current_exception();
    }
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
      wake_.notify_all();
    }
    for (std::thread& worker : workers_) worker.join();
    if (trouble_) trouble = trouble_;
    if (trouble) std::rethrow_exception(trouble);
  }

 private:
  std::size_t PlaceOf(std::size_t block) const { return block % worked_.size(); }

  // False where the work has failed.
  bool AwaitPlace() {
    std::unique_lock lock(mutex_);
    room_.wait(lock, [this] { return trouble_ || read_ < written_ + worked_.size(); });
    return !trouble_;
  }

  void Work() {
    std::unique_lock lock(mutex_);
    for (;;) {
      wake_.wait(lock, [this] { return trouble_ || ended_ || begun_ < read_; });
      if (trouble_ || begun_ == read_) return;
      const std::size_t place = PlaceOf(begun_++);
      if (!Do(lock, stages_.work, place)) return;
      worked_[place] = true;
      if (!writing_) WriteReady(lock);
    }
  }

  // Whoever finds the next block worked on writes it, and those behind it.
  void WriteReady(std::unique_lock<std::mutex>& lock) {
    writing_ = true;
    while (worked_[PlaceOf(written_)] && Do(lock, stages_.write, PlaceOf(written_))) {
      worked_[PlaceOf(written_++)] = false;
      room_.notify_one();
    }
    writing_ = false;
  }

  // Without the lock; false where it throws.
  bool Do(std::unique_lock<std::mutex>& lock, const std::function<void(std::size_t)>& stage,
          std::size_t place) {
    std::exception_ptr trouble;
    lock.unlock();
    try {
      stage(place);
    } catch (...) {
      trouble = std::current_exception();
    }
    lock.lock();
    if (!trouble) return !trouble_;
    if (!trouble_) trouble_ = trouble;
    wake_.notify_all();
    room_.notify_one();
    return false;
  }

  const PipelineStages& stages_;
  std::vector<bool> worked_;  // by place: a block that waits to be written
  std::vector<std::thread> workers_;
  std::mutex mutex_;  // of all below
  std::condition_variable wake_, room_;
  std::size_t read_ = 0, begun_ = 0, written_ = 0;  // blocks
  bool ended_ = false, writing_ = false;
  std::exception_ptr trouble_;
};

}  // namespace

std::size_t PipelinePlaces(std::size_t jobs) { return jobs > 1 ? 3 * jobs : 1; }

void RunPipeline(std::size_t jobs, const PipelineStages& stages) {
  if (jobs > 1)
    if (Pipeline pipeline(jobs, stages); pipeline.HasWorkers()) return pipeline.Run();
  while (stages.read(0)) {
    stages.work(0);
    stages.write(0);
  }
}

}  // namespace geomath_files::program
