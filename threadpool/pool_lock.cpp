#include "threadpool/global_pool.h"

namespace alg {

bool PoolLock::isNext(Turn turn, unsigned ticket) const {
  const Queue& previews = queues_[static_cast<std::size_t>(Turn::kPreview)];
  return depth_ == 0 && queues_[static_cast<std::size_t>(turn)].called == ticket &&
         (turn == Turn::kPreview || previews.issued == previews.called);
}

void PoolLock::lock(Turn turn) {
  const pthread_t self = pthread_self();
  pthread_mutex_lock(&mutex_);
  if (depth_ == 0 || pthread_equal(owner_, self) == 0) {
    Queue& queue = queues_[static_cast<std::size_t>(turn)];
    const unsigned ticket = queue.issued++;
    while (!isNext(turn, ticket)) {
      pthread_cond_wait(&changed_, &mutex_);
    }
    ++queue.called;
    owner_ = self;
  }
  ++depth_;
  pthread_mutex_unlock(&mutex_);
}

void PoolLock::unlock() {
  pthread_mutex_lock(&mutex_);
  if (--depth_ == 0) {
    pthread_cond_broadcast(&changed_);
  }
  pthread_mutex_unlock(&mutex_);
}

unsigned PoolLock::waiting(Turn turn) {
  pthread_mutex_lock(&mutex_);
  const Queue& queue = queues_[static_cast<std::size_t>(turn)];
  const unsigned count = queue.issued - queue.called;
  pthread_mutex_unlock(&mutex_);
  return count;
}

}  // namespace alg
