// Programs as their users run them: command line, surroundings, exit code and what they show.
#pragma once

#include "tests/support/test.h"

#include <csignal>
#include <fcntl.h>
#include <optional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sharedanalysis::test {

struct Outcome {
  int code; // 1000 + signal when one has ended the program
  std::string out, err;
};

struct Surroundings {
  std::optional<rlim_t> fileSize; // largest file in bytes
  const char* threads = "1";      // OMP_NUM_THREADS
  const char* output = nullptr;   // where standard output goes, instead of here
};

// The program while it runs; what it shows must fit into a pipe.  A program that hangs is ended by its alarm.
class Program {
public:
  explicit Program(std::vector<std::string> arguments, const Surroundings& surroundings = {}) {
    std::vector<char*> argv, envp;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    std::string threads = std::string("OMP_NUM_THREADS=") + surroundings.threads;
    for (char** variable = environ; *variable; ++variable)
      if (!std::string_view(*variable).starts_with("OMP_")) envp.push_back(*variable);
    envp.push_back(threads.data());
    std::string policy = "OMP_WAIT_POLICY=PASSIVE"; // more threads than cores must not wait in loops
    envp.push_back(policy.data());
    envp.push_back(nullptr);

    int out[2], err[2];
    if (pipe(out) != 0 || pipe(err) != 0) throw std::runtime_error("no pipe");
    process_ = fork();
    if (process_ < 0) throw std::runtime_error("no process");
    if (process_ == 0) {
      constexpr unsigned longest = 120; // s
      dup2(surroundings.output ? open(surroundings.output, O_WRONLY) : out[1], STDOUT_FILENO);
      dup2(err[1], STDERR_FILENO);
      if (const int nothing = open("/dev/null", O_RDONLY); nothing >= 0) dup2(nothing, STDIN_FILENO);
      for (int end : {out[0], out[1], err[0], err[1]}) close(end);
      if (surroundings.fileSize) {
        const rlimit limit{*surroundings.fileSize, *surroundings.fileSize};
        setrlimit(RLIMIT_FSIZE, &limit);
      }
      alarm(longest);
      execvpe(argv[0], argv.data(), envp.data());
      _exit(127);
    }
    close(out[1]);
    close(err[1]);
    out_ = out[0];
    err_ = err[0];
  }
  ~Program() {
    if (process_ > 0) {
      kill(process_, SIGKILL);
      wait();
    }
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // Up to the end, and closes it.
  static std::string readAll(int pipe) {
    std::string text;
    std::array<char, 4096> piece;
    for (ssize_t count; (count = read(pipe, piece.data(), piece.size())) > 0;) text.append(piece.data(), count);
    close(pipe);
    return text;
  }
  void signal(int number) const { kill(process_, number); }

  Outcome wait() {
    Outcome outcome{0, readAll(out_), readAll(err_)};
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = -1;
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    return outcome;
  }

private:
  pid_t process_ = -1;
  int out_ = -1, err_ = -1;
};

// Files of this process grow no larger than so, as on a full disk.
class SmallFiles {
public:
  explicit SmallFiles(rlim_t size) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &whole_);
    const rlimit small{size, whole_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  ~SmallFiles() {
    setrlimit(RLIMIT_FSIZE, &whole_);
    std::signal(SIGXFSZ, handler_);
  }

private:
  rlimit whole_{};
  void (*handler_)(int);
};

inline Outcome shell(const std::string& command) { return Program({"sh", "-c", command}).wait(); }

// For mpirun in a container, with more threads than cores, and on one machine: looking for networks takes longer than the runs.
inline bool setUpRanks() {
  constexpr const char* settings[][2] = {{"ALLOW_RUN_AS_ROOT", "1"},
                                         {"ALLOW_RUN_AS_ROOT_CONFIRM", "1"},
                                         {"MCA_btl_vader_single_copy_mechanism", "none"},
                                         {"MCA_pml", "ob1"},
                                         {"MCA_btl", "self,vader"},
                                         {"MCA_osc", "^ucx"},
                                         {"MCA_mpi_yield_when_idle", "1"}};
  for (const auto& [name, value] : settings) setenv((std::string("OMPI_") + name).c_str(), value, 1);
  return shell("command -v mpirun").code == 0;
}

} // namespace sharedanalysis::test
