// Per-thread data of the host.
#pragma once

#include "dsm_ker_ThreadData.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

namespace sharedanalysis::host {

// Thread and message numbers, and the lines of the message that the thread is writing.  They are held back until the next
// message begins, so that the lines of one message stay together in the file.
class ThreadRecord {
public:
  explicit ThreadRecord(int32_t number) : data{number, 1} {}

  void addLine(int32_t unit, int32_t message, std::string_view line);
  void deliver();

  dsm_ker_ThreadData data; // the thread's own; only the lines are shared with deliverAll

private:
  void deliverLocked();

  std::mutex mutex_;
  int32_t unit_ = 0, message_ = 0;
  int64_t count_ = 0;
  std::string lines_;
};

// The record of the calling thread, made on first use with the next free number.
ThreadRecord& thisThread();

// Hands the held-back lines of all threads to the job.
void deliverAll();

} // namespace sharedanalysis::host
