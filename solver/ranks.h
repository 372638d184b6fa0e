// What the ranks of a job tell each other.  With one rank nothing is sent and every result is the caller's own.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace sharedanalysis::solver {

// The connection to another rank is gone.
class RankLost : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// All members are called by every rank at the same place, but send and receive.
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

private:
  void sendBytes(const void* data, int64_t bytes, int32_t destination) const;
  void receiveBytes(void* data, int64_t bytes, int32_t source) const;
  void broadcastBytes(void* data, int64_t bytes) const;

  int32_t rank_, size_;
};

} // namespace sharedanalysis::solver
