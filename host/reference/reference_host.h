// The reference host, as a program uses it.  The library calls it through the platform interface.
//
// One job at a time.  Messages that arrive while no job is open go nowhere and are counted.  All functions may be called
// from any thread except openJob and closeJob, which belong to one thread; messages of other threads may arrive meanwhile.
#pragma once

#include "host_service.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>
#include <vector>

namespace sharedanalysis::host {

struct JobFiles {
  std::filesystem::path message; // <job>.msg: channel -6 and errors that the library reports to the host
  std::filesystem::path log;     // <job>.log: channel -7, and unit 7, where diagnostics are printed
  std::filesystem::path status;  // <job>.sta: one line for each record of the status channel: type, then text
};

// When the files are made: at once, or when there is something to say, as one of many processes has it that mostly are silent.
enum class FilesMade { AtOnce, WhenNeeded };

// Opens the files of a job in the place of older ones of the name; a job that is still open is closed first.  Job status, thread
// error, error status, the counter blocks and the numbers of stored diagnostics start afresh; a kill request stays.
// Throws std::system_error naming the file; then no job is open.
SA_HOST_SERVICE JobFiles openJob(const std::string& job, const std::filesystem::path& directory);
SA_HOST_SERVICE JobFiles openJob(const std::string& job, const std::filesystem::path& directory, FilesMade when);

// What follows, of a job whose files are made when they are needed.  The heading, with which a job begins, is kept for them; what
// is said in the course makes them, an error in that being one of writeError and closeJob; a closing goes into files that are
// there, else nowhere.
enum class Chapter { Heading, Course, Closing };
SA_HOST_SERVICE void beginChapter(Chapter chapter);

// Brings all files up to date and closes them.  Throws std::system_error naming the file if anything was lost on the way,
// for instance on a full disk; the job is then closed as well.  Does nothing when no job is open.
SA_HOST_SERVICE void closeJob();

// The first write error of the open job, or no error.  Messages never fail; what could not be written is known here.
SA_HOST_SERVICE std::error_code writeError();

// The diagnostic database of the open job: <job>.diagnostics.sqlite in its directory, or the file of SetDdbName.  The name
// counts when it is set before the first record or step; a job that has neither has no database.  Empty without a job.
SA_HOST_SERVICE std::filesystem::path diagnosticDatabase();

// Lines, status records and diagnostics that reached no file: no job was open, or the channel is none of -6, -7 and 7.
SA_HOST_SERVICE int64_t unfiledRecords();

// The status that the library reported last, 2 after LFC_XUT_ABORT, -1 when there is none.
SA_HOST_SERVICE int32_t jobStatus();

// Whether thr_ErrorInThread or LFC_XUT_ABORT was called on any thread.
SA_HOST_SERVICE bool threadError();

// The text of the last error that reached the status channel, on one line, whether or not a job was open; openJob forgets it.
SA_HOST_SERVICE std::string lastError();

// Whether the library has ended the analysis.
SA_HOST_SERVICE bool transmitterClosing();

// Makes SIGINT and SIGTERM a kill request, once each: the second signal of a kind has its usual effect.
SA_HOST_SERVICE void installSignalHandlers();
SA_HOST_SERVICE bool killSignal();
SA_HOST_SERVICE void requestKill();
// For a program that goes on with another job.
SA_HOST_SERVICE void withdrawKill();

// Consecutive numbers of the solver and the labels that they have in a part instance: number first + k has firstLabel + k.
struct NumberRange {
  int32_t first, count, firstLabel;
};

struct PartInstance {
  std::string name;
  std::vector<NumberRange> nodes, elements;
};

struct Model {
  std::vector<PartInstance> parts;           // none: every number keeps itself
  std::map<std::string, std::string> labels; // names behind label references, the texts that begin with " L"
};

// The numbers of a list as ranges; numbers[k] has labels[k].  Throws std::invalid_argument for lists of different lengths.
SA_HOST_SERVICE std::vector<NumberRange> numberRanges(const std::vector<int32_t>& numbers,
                                                      const std::vector<int32_t>& labels);

// The model that numbers are looked up in; it stays until another is set, and does not change while a job runs.
// Throws std::invalid_argument when two parts have the same number; then the model stays as it was.
SA_HOST_SERVICE void setModel(const Model& model);
SA_HOST_SERVICE bool modelIsInParts();

// A mark of the resource monitor: seconds since the job was opened, processor time and peak memory of the process.
struct ResourceMark {
  std::string text;
  double elapsed, processor;
  int64_t peakMemory; // bytes
};

// The last marks of the process, at most 1024, in order.
SA_HOST_SERVICE std::vector<ResourceMark> resourceMarks();

// Host components that are started, 0 to 13.
SA_HOST_SERVICE int32_t liveComponents();

// Where a launcher has started the process on several ranks, connects them through MPI; else does nothing.  Returns the
// number of ranks.  Throws std::runtime_error when the library with the MPI transport cannot be loaded.
SA_HOST_SERVICE int connectRanks();
// Ends the connection; every rank calls it, after its last message.
SA_HOST_SERVICE void disconnectRanks();
// Ends all ranks at once, for one that cannot go on while others wait for it; with one rank it does nothing.
SA_HOST_SERVICE void abortRanks(int code);

} // namespace sharedanalysis::host
