#include "ranks.h"

#include "dmpC_CommContainer.h"

#include <string>

namespace sharedanalysis::solver {
namespace {

constexpr int32_t messageType = 6, tag = 0;

} // namespace

Ranks::Ranks()
    : rank_(dmpC_CommContainer::GetCommunicator().GetRank()), size_(dmpC_CommContainer::GetCommunicator().GetSize()) {}

void Ranks::sendBytes(const void* data, int64_t bytes, int32_t destination) const {
  if (!dmpC_CommContainer::GetCommunicator().Send(data, bytes, destination, messageType, tag))
    throw RankLost("nothing can be sent to rank " + std::to_string(destination));
}

void Ranks::receiveBytes(void* data, int64_t bytes, int32_t source) const {
  if (dmpC_CommContainer::GetCommunicator().Receive(data, bytes, source, messageType, tag) != bytes)
    throw RankLost("rank " + std::to_string(source) + " does not answer as expected");
}

void Ranks::broadcastBytes(void* data, int64_t bytes) const {
  if (!isRoot()) return receiveBytes(data, bytes, 0);
  for (int32_t other = 1; other < size_; ++other) sendBytes(data, bytes, other);
}

void Ranks::send(const std::vector<double>& values, int32_t destination) const {
  sendBytes(values.data(), static_cast<int64_t>(values.size() * sizeof(double)), destination);
}

void Ranks::receive(std::vector<double>& values, int32_t source) const {
  receiveBytes(values.data(), static_cast<int64_t>(values.size() * sizeof(double)), source);
}

void Ranks::gatherRanges(std::vector<double>& values, const std::vector<int64_t>& first) const {
  const auto bytes = [&](int32_t r) {
    return (first[static_cast<std::size_t>(r) + 1] - first[static_cast<std::size_t>(r)]) *
           static_cast<int64_t>(sizeof(double));
  };
  const auto begin = [&](int32_t r) { return values.data() + first[static_cast<std::size_t>(r)]; };
  if (!isRoot()) return sendBytes(begin(rank_), bytes(rank_), 0);
  for (int32_t other = 1; other < size_; ++other) receiveBytes(begin(other), bytes(other), other);
}

std::vector<int64_t> Ranks::joined(const std::vector<int64_t>& own) const {
  if (!areSeveral()) return own;
  std::vector<int64_t> all;
  for (int32_t turn = 0; turn < size_; ++turn) {
    std::vector<int64_t> count{static_cast<int64_t>(own.size())};
    std::vector<int64_t> theirs = own;
    // by the root to everyone
    if (turn != 0) {
      if (rank_ == turn) {
        sendBytes(count.data(), sizeof(int64_t), 0);
        sendBytes(own.data(), static_cast<int64_t>(own.size() * sizeof(int64_t)), 0);
      } else if (isRoot()) {
        receiveBytes(count.data(), sizeof(int64_t), turn);
        theirs.resize(static_cast<std::size_t>(count[0]));
        receiveBytes(theirs.data(), static_cast<int64_t>(theirs.size() * sizeof(int64_t)), turn);
      }
    }
    broadcast(count);
    theirs.resize(static_cast<std::size_t>(count[0]));
    broadcast(theirs);
    all.insert(all.end(), theirs.begin(), theirs.end());
  }
  return all;
}

void Ranks::smallest(std::vector<double>& values) const {
  if (!areSeveral()) return;
  if (!isRoot()) {
    send(values, 0);
  } else {
    std::vector<double> theirs(values.size());
    for (int32_t other = 1; other < size_; ++other) {
      receive(theirs, other);
      for (std::size_t k = 0; k < values.size(); ++k)
        if (!(theirs[k] >= values[k]) && values[k] == values[k]) values[k] = theirs[k];
    }
  }
  broadcast(values);
}

bool Ranks::allAgree(bool own) const {
  std::vector<double> agreement{own ? 1.0 : 0.0};
  smallest(agreement);
  return agreement[0] == 1.0;
}

} // namespace sharedanalysis::solver
