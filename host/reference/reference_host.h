// The reference host: what a program does with it.  The library talks to it through the platform interface.
//
// One job at a time.  Messages that arrive while no job is open go nowhere and are counted.  All functions may be called
// from any thread except openJob and closeJob, which belong to one thread; messages of other threads may arrive meanwhile.
#pragma once

#include "host_service.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

namespace sharedanalysis::host {

struct JobFiles {
  std::filesystem::path message; // <job>.msg: channel -6 and errors that the library reports to the host
  std::filesystem::path log;     // <job>.log: channel -7
  std::filesystem::path status;  // <job>.sta: one line for each record of the status channel: type, then text
};

// Opens the files of a job, emptying older ones of the name; a job that is still open is closed first.  Job status and
// thread error start afresh; a kill request stays.  Throws std::system_error naming the file; then no job is open.
SA_HOST_SERVICE JobFiles openJob(const std::string& job, const std::filesystem::path& directory);

// Brings all files up to date and closes them.  Throws std::system_error naming the file if anything was lost on the way,
// for instance on a full disk; the job is closed all the same.  Does nothing when no job is open.
SA_HOST_SERVICE void closeJob();

// The first write error of the open job, or no error.  Messages never fail; what could not be written is known here.
SA_HOST_SERVICE std::error_code writeError();

// Lines and status records that reached no file: no job was open, or the channel is neither -6 nor -7.
SA_HOST_SERVICE int64_t unfiledRecords();

// The status that the library reported last, 2 after LFC_XUT_ABORT, -1 when there is none.
SA_HOST_SERVICE int32_t jobStatus();

// Whether thr_ErrorInThread or LFC_XUT_ABORT was called on any thread.
SA_HOST_SERVICE bool threadError();

// Whether the library said that the end of the analysis has come.
SA_HOST_SERVICE bool transmitterClosing();

// Makes SIGINT and SIGTERM a kill request, once each: the second signal of a kind has its usual effect.
SA_HOST_SERVICE void installSignalHandlers();
SA_HOST_SERVICE bool killSignal();
SA_HOST_SERVICE void requestKill();
// For a program that goes on with another job.
SA_HOST_SERVICE void withdrawKill();

// Host components that are started, 0 to 13.
SA_HOST_SERVICE int32_t liveComponents();

} // namespace sharedanalysis::host
