/// @file
/// A fixed pool of POSIX threads with a first-in, first-out queue, a worker that splits one job
/// into pieces and waits for all of them, and the process-wide pool of the effect pipeline.
///
/// Tasks and callbacks must not throw: on a pool's thread that ends the process. Nor may they wait
/// for other tasks of their own pool, or stop it: all its threads might then be waiting.
///
/// Log lines go to the tag "Defog" at priority 2 (VERBOSE).
#pragma once

#include <pthread.h>

#include <cstdint>
#include <deque>
#include <vector>

#include "libalgorithm/export.h"

/// One unit of work: a function and its argument. Owned by whoever made it, never by the pool; it
/// must stay alive until it has run.
class ALGORITHM_API Task {
 public:
  /// @param taskFunction  what the task does; not null
  /// @param taskArgument  passed to the function unchanged
  Task(void (*taskFunction)(void*), void* taskArgument);
  /// Calls the function, on this thread.
  void operator()();
  /// The same.
  void run();

 private:
  void (*function)(void*);
  void* argument;
};

/// A mutex that knows whether it is held. Destruction busy-waits until it is free, then unlocks
/// once more and destroys the mutex; callers rely on that order. Part of ThreadPool: the library
/// exports none of its functions.
class TaskLock {
 public:
  /// A free mutex, not recursive.
  TaskLock();
  /// Waits until nobody holds it.
  ~TaskLock();
  TaskLock(const TaskLock&) = delete;
  TaskLock& operator=(const TaskLock&) = delete;
  /// Waits for the mutex and takes it.
  void lock();
  /// Releases it; only for the thread that took it.
  void unlock();
  /// For waiting on a condition.
  /// @return the mutex itself
  pthread_mutex_t* native() { return &mutex; }

 private:
  pthread_mutex_t mutex;
  volatile uint8_t held = 0;
};

/// A fixed number of threads and a queue of tasks. Construct, initialize_threadpool(), add_task()
/// from any thread, destroy_threadpool(). A stopped pool can't be started again. Constructors and
/// initialize_threadpool() may throw std::bad_alloc.
class ALGORITHM_API ThreadPool {
 public:
  /// A pool of four threads, none of which is started yet.
  ThreadPool();
  /// Starts no thread yet.
  /// @param size  threads of the pool; 0 is allowed: tasks then just queue up
  explicit ThreadPool(int size);
  /// Stops the pool if it runs. Tasks still queued are neither run nor deleted.
  ~ThreadPool();
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  /// Starts the threads.
  /// @return 0, or -1 as soon as one can't be made (those already started keep running)
  int initialize_threadpool();
  /// Stops and joins the threads; running tasks are finished, tasks still queued are never run. Not
  /// for the pool's own threads.
  /// @return 0
  int destroy_threadpool();
  /// The body of a pool thread: runs tasks until the pool stops, then ends the thread.
  /// @return never
  void* execute_thread();
  /// Queues a task; any thread may. When the queue can't grow, it writes "out of memory" to
  /// standard output and ends the process with exit status 1.
  /// @param task  remains the caller's, who keeps it alive until it has run
  /// @return 0
  int add_task(Task* task);

 private:
  friend class ThreadPoolWorker;
  struct Layout;

  /// add_task(), but returns false when the queue can't grow. Not exported.
  __attribute__((visibility("hidden"))) bool queue(Task* task) noexcept;

  // Callers are built separately from the library: the members and their order never change.
  int32_t pool_size;
  TaskLock task_lock;        // guards tasks and pool_state
  pthread_cond_t task_cond;  // signalled per queued task, broadcast on stop
  std::vector<pthread_t> threads;
  std::deque<Task*> tasks;
  volatile int32_t pool_state;  // 0 = started, 1 = stopped
};

/// Thread entry point for pthread_create.
/// @param pool  a ThreadPool*
/// @return never
extern "C" ALGORITHM_API void* start_thread(void* pool);

/// Callback for one piece of a job. Note the order: the record's third field comes second.
using ThreadPoolTaskFunc = void (*)(const void* input, const void* param, void* output);

/// One piece of a job; owned by the caller and kept alive until Work() returns. The worker never
/// dereferences the pointers.
struct tagT_ThreadPoolTaskInput {
  const void* input;  ///< the callback's first argument
  void* output;       ///< its third
  const void* param;  ///< its second
};

class ThreadPoolWorker;

/// What one queued task of a worker carries.
class ALGORITHM_API ThreadPoolTaskInfo {
 public:
  /// @param owner     the worker that counts the piece
  /// @param function  the job's callback
  /// @param record    the piece
  ThreadPoolTaskInfo(ThreadPoolWorker* owner, ThreadPoolTaskFunc function,
                     tagT_ThreadPoolTaskInput* record);

  ThreadPoolWorker* worker;         ///< told when the piece is finished
  ThreadPoolTaskFunc callback;      ///< called with the record's pointers
  tagT_ThreadPoolTaskInput* input;  ///< the piece
};

/// Runs one job of several pieces on a pool. Use each worker for exactly one Work().
class ALGORITHM_API ThreadPoolWorker {
 public:
  /// Queues nothing yet.
  /// @param workPool  runs the pieces: started, and not stopped before Work() returns
  /// @param pieces    number of pieces; none below 1
  /// @param function  called once for each piece
  /// @param records   one record per piece; the caller's, alive until Work() returns
  ThreadPoolWorker(ThreadPool* workPool, int pieces, ThreadPoolTaskFunc function,
                   tagT_ThreadPoolTaskInput* records);
  /// Not before Work() has returned.
  ~ThreadPoolWorker();
  ThreadPoolWorker(const ThreadPoolWorker&) = delete;
  ThreadPoolWorker& operator=(const ThreadPoolWorker&) = delete;

  /// Queues the pieces in index order and returns when all have finished. Pieces run in parallel
  /// and must not write to the same memory. Without pieces it returns at once. Pieces that can't be
  /// queued for lack of memory run on the calling thread. Not for the pool's own threads.
  void Work();
  /// Counts one piece as finished (called on the pool's threads).
  void OneTaskFinish();

 private:
  struct Layout;

  pthread_mutex_t worker_lock;  // guards remaining
  pthread_cond_t worker_cond;
  int32_t count;
  int32_t remaining;
  ThreadPoolTaskFunc callback;
  tagT_ThreadPoolTaskInput* inputs;
  ThreadPool* pool;
};

/// What every queued task of a worker runs.
/// @param info  a ThreadPoolTaskInfo*
ALGORITHM_API void WorkerThreadBase(void* info);

/// The process-wide pool of four threads: null until HALThreadPoolInit() and after
/// HALThreadPoolDestroy(). Read-only for callers.
ALGORITHM_API extern ThreadPool* g_threadpool;
/// 1 while g_threadpool is running, else 0.
ALGORITHM_API extern int32_t g_hal_threadpool_init;

/// Makes and starts the process-wide pool if there is none. When it can't start, the half-started
/// pool is abandoned, its threads stay parked, and the library stays loaded for the life of the
/// process; the next call makes a new pool. Thread-safe. With a pool it returns at once, even on
/// the pool's own threads; without one it waits for an effect run under way.
/// @return 0, or -1 when it can't start
ALGORITHM_API int HALThreadPoolInit();
/// Stops and deletes the process-wide pool if there is one, after an effect run under way has
/// ended; the next run starts another. Callers that put tasks of their own on g_threadpool must
/// finish them first. Thread-safe, but not for the pool's own threads.
/// @return 0
ALGORITHM_API int HALThreadPoolDestroy();
