// Communication between the ranks of a job.  With one rank nothing is sent and every result is the caller's own.
//
// A rank that fails notifies all others and waits until each has failed as well: a rank that waits for a message of a
// failed rank learns of it.  So the ranks end together, none waits for another forever, and no message is left behind.  For that
// every message carries a heading that can say so, and reductions are made of such messages: an operation of MPI in which
// all ranks take part cannot be told that one of them will not.
#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>
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

// For or from one rank.
template <class T>
struct Parcel {
  int32_t rank = 0;
  std::vector<T> values{};
};

// What this process has sent so far.
struct Traffic {
  int64_t messages = 0, bytes = 0;
};

// All members are called by every rank at the same place, but send and receive.  They throw RankFailed or RankLost.
class Ranks {
public:
  Ranks();
  // This process by itself, whatever others there are.
  static Ranks alone() { return {0, 1}; }
  int32_t rank() const { return rank_; }
  int32_t size() const { return size_; }
  bool isRoot() const { return rank_ == 0; }
  bool areSeveral() const { return size_ > 1; }

  // Send returns at once; what it is given has been copied.
  template <class T>
  void send(const std::vector<T>& values, int32_t destination) const {
    sendBytes(values.data(), bytesOf(values), destination);
  }
  // As many as the vector holds.
  template <class T>
  void receive(std::vector<T>& values, int32_t source) const {
    receiveBytes(values.data(), bytesOf(values), source);
  }

  // Parcels for some ranks, one each at most, this rank among them; those that the others have for this one, by rank.  Nobody
  // has to know who has something for him.
  template <class T>
  std::vector<Parcel<T>> exchange(const std::vector<Parcel<T>>& out) const {
    static_assert(std::is_trivially_copyable_v<T>);
    std::vector<Bytes> packed;
    for (const Parcel<T>& parcel : out) packed.push_back({parcel.rank, parcel.values.data(), bytesOf(parcel.values)});
    std::vector<Parcel<T>> in;
    exchangeBytes(packed, [&](int32_t source, const char* bytes, int64_t count) {
      Parcel<T>& parcel =
          in.emplace_back(Parcel<T>{source, std::vector<T>(static_cast<std::size_t>(count) / sizeof(T))});
      if (count > 0) std::memcpy(static_cast<void*>(parcel.values.data()), bytes, static_cast<std::size_t>(count));
    });
    return in;
  }

  // The root's values on every rank, which has room for as many.
  template <class T>
  void broadcast(std::vector<T>& values) const {
    broadcastBytes(values.data(), bytesOf(values));
  }
  // Element by element, of all ranks: the smallest, NaN where one is NaN.
  void smallest(std::vector<double>& values) const;
  void smallest(std::vector<int64_t>& values) const;
  // Element by element, of all ranks, modulo 2^64.
  void sum(std::vector<int64_t>& values) const;
  int64_t sum(int64_t value) const;
  // The lists of all ranks one after the other, on the root.
  template <class T>
  std::vector<T> gathered(const std::vector<T>& own) const {
    std::vector<T> all;
    for (const Parcel<T>& parcel : exchange(std::vector<Parcel<T>>{{0, own}}))
      all.insert(all.end(), parcel.values.begin(), parcel.values.end());
    return all;
  }
  // The same on every rank: for short lists.
  template <class T>
  std::vector<T> joined(const std::vector<T>& own) const {
    std::vector<T> all = gathered(own);
    std::vector<int64_t> count{static_cast<int64_t>(all.size())};
    broadcast(count);
    all.resize(static_cast<std::size_t>(count[0]));
    broadcast(all);
    return all;
  }
  bool allAgree(bool own) const;
  // Barrier.
  void synchronise() const { allAgree(true); }

  static Traffic traffic();
  // A rank that sends nothing for so many seconds while this one waits for it is lost; 0 waits forever.
  static void waitAtMost(double seconds);

  // A rank that fails calls this once, and sends nothing afterwards.  `teller` is the rank from which the failure is known,
  // the own one where it began.  Returns what has failed first in the order of the ranks, the same on all of them.
  RankFailure settle(const RankFailure& own, int32_t teller) const;

private:
  Ranks(int32_t rank, int32_t size) : rank_(rank), size_(size) {}
  struct Bytes {
    int32_t rank;
    const void* data;
    int64_t count;
  };
  using Taker = std::function<void(int32_t, const char*, int64_t)>;

  template <class T>
  static int64_t bytesOf(const std::vector<T>& values) {
    return static_cast<int64_t>(values.size() * sizeof(T));
  }
  void sendBytes(const void* data, int64_t bytes, int32_t destination) const;
  void receiveBytes(void* data, int64_t bytes, int32_t source) const;
  void broadcastBytes(void* data, int64_t bytes) const;
  void exchangeBytes(const std::vector<Bytes>& out, const Taker& take) const;
  template <class T, class Combine>
  void reduce(std::vector<T>& values, Combine combine) const;

  int32_t rank_, size_;
};

} // namespace sharedanalysis::solver
