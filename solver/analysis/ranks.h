// Communication between the ranks of a job.  With one rank nothing is sent and every result is the caller's own.
//
// A rank that fails tells all others, and waits until every one of them has failed as well: whoever waits for a message of a
// failed rank learns of it.  So the ranks end together, none waits for another forever, and no message is left behind.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// The connection to another rank is gone.
class RankLost : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

struct RankFailure {
  int32_t rank = 0; // where it began
  int32_t code = 0; // exit code
  std::string text;
};

// Another rank has failed.
class RankFailed : public std::runtime_error {
public:
  RankFailed(RankFailure failure, int32_t teller)
      : std::runtime_error(failure.text), failure_(std::move(failure)), teller_(teller) {}
  const RankFailure& failure() const { return failure_; }
  int32_t teller() const { return teller_; }

private:
  RankFailure failure_;
  int32_t teller_; // the rank from which it is known
};

// All members are called by every rank at the same place, but send and receive.  They throw RankFailed or RankLost.
class Ranks {
public:
  Ranks();
  int32_t rank() const { return rank_; }
  int32_t size() const { return size_; }
  bool isRoot() const { return rank_ == 0; }
  bool areSeveral() const { return size_ > 1; }

  void send(const std::vector<double>& values, int32_t destination) const;
  void receive(std::vector<double>& values, int32_t source) const; // as many as the vector holds

  // values[first[r] .. first[r + 1]) of every rank r to the root, which has the whole vector afterwards.
  void gatherRanges(std::vector<double>& values, const std::vector<int64_t>& first) const;
  // The lists of all ranks one after the other, on every rank.
  std::vector<int64_t> joined(const std::vector<int64_t>& own) const;
  // The root's values on every rank.
  template <class T>
  void broadcast(std::vector<T>& values) const {
    broadcastBytes(values.data(), static_cast<int64_t>(values.size() * sizeof(T)));
  }
  // Element by element, of all ranks: the smallest, NaN where one is NaN.
  void smallest(std::vector<double>& values) const;
  bool allAgree(bool own) const;
  // Barrier.
  void synchronise() const { allAgree(true); }

  // A rank that fails calls this once, and sends nothing afterwards.  `teller` is the rank from which the failure is known,
  // the own one where it began.  Returns what has failed first in the order of the ranks, the same on all of them.
  RankFailure settle(const RankFailure& own, int32_t teller) const;

private:
  void sendBytes(const void* data, int64_t bytes, int32_t destination) const;
  void receiveBytes(void* data, int64_t bytes, int32_t source) const;
  void broadcastBytes(void* data, int64_t bytes) const;

  int32_t rank_, size_;
};

} // namespace sharedanalysis::solver
