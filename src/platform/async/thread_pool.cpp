#include "platform/async/thread_pool.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "platform/async/background_thread.h"

namespace corvane {
namespace {

constexpr std::chrono::seconds idleLife{5};

thread_local bool isPoolThread = false;

}  // namespace

ThreadPool& ThreadPool::shared() {
  // Never destroyed: its threads may outlast the destruction of static objects.
  static auto* pool = new ThreadPool;  // NOLINT(cppcoreguidelines-owning-memory)
  return *pool;
}

ThreadPool::ThreadPool() : cores_(std::max(2U, std::thread::hardware_concurrency())) {}

void ThreadPool::submit(Task task) {
  const std::lock_guard lock(mutex_);
  tasks_.push_back(std::move(task));
  growIfStarving();
  hasTask_.notify_one();
}

/// Starts a thread where a task would wait although fewer threads work than the machine has cores.
void ThreadPool::growIfStarving() {
  if (tasks_.size() > idle_ && threads_ - blocked_ < cores_) {
    ++threads_;
    startBackgroundThread([this] { runThread(); }).detach();
  }
}

void ThreadPool::runThread() {
  isPoolThread = true;
  std::unique_lock lock(mutex_);
  while (true) {
    ++idle_;
    const bool hasTask = hasTask_.wait_for(lock, idleLife, [this] { return !tasks_.empty(); });
    --idle_;
    if (!hasTask) {
      --threads_;
      return;
    }
    Task task = std::move(tasks_.front());
    tasks_.pop_front();
    growIfStarving();
    lock.unlock();
    task();
    task = nullptr;
    lock.lock();
  }
}

ThreadPool::Blocking::Blocking() : isPoolThread_(isPoolThread) {
  if (isPoolThread_) {
    ThreadPool& pool = shared();
    const std::lock_guard lock(pool.mutex_);
    ++pool.blocked_;
    pool.growIfStarving();
  }
}

ThreadPool::Blocking::~Blocking() {
  if (isPoolThread_) {
    ThreadPool& pool = shared();
    const std::lock_guard lock(pool.mutex_);
    --pool.blocked_;
  }
}

}  // namespace corvane
