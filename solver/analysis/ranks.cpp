#include "solver/analysis/ranks.h"

#include "dmpC_CommContainer.h"

#include <algorithm>
#include <cstring>

namespace sharedanalysis::solver {
namespace {

constexpr int32_t messageType = 6, tag = 0;
constexpr int64_t longestPiece = int64_t{1} << 30; // of a message

// Every message begins with one.
struct Heading {
  int32_t isFailure = 0; // then a message with the text comes after it
  int32_t rank = 0, code = 0, textBytes = 0;
};
constexpr int64_t headingBytes = sizeof(Heading);

dmpC_Communicator& communicator() { return dmpC_CommContainer::GetCommunicator(); }

[[noreturn]] void lost(int32_t rank, const char* what) {
  throw RankLost("the connection to rank " + std::to_string(rank) + " is lost: " + what);
}

void sendMessage(const void* data, int64_t bytes, int32_t destination) {
  if (!communicator().Send(data, bytes, destination, messageType, tag)) lost(destination, "nothing can be sent");
}

int64_t receiveMessage(void* data, int64_t capacity, int32_t source) {
  const int64_t bytes = communicator().Receive(data, capacity, source, messageType, tag);
  if (bytes < 0) lost(source, "nothing can be received");
  return bytes;
}

// The rest of a failure message after its header.
RankFailure receiveFailure(const Heading& heading, int32_t source) {
  RankFailure failure{heading.rank, heading.code, std::string(static_cast<std::size_t>(heading.textBytes), ' ')};
  if (receiveMessage(failure.text.data(), heading.textBytes, source) != heading.textBytes)
    lost(source, "a failure is told in part");
  return failure;
}

void tellFailure(const RankFailure& failure, int32_t destination) {
  const Heading heading{1, failure.rank, failure.code, static_cast<int32_t>(failure.text.size())};
  sendMessage(&heading, headingBytes, destination);
  sendMessage(failure.text.data(), heading.textBytes, destination);
}

} // namespace

Ranks::Ranks() : rank_(communicator().GetRank()), size_(communicator().GetSize()) {}

void Ranks::sendBytes(const void* data, int64_t bytes, int32_t destination) const {
  const char* next = static_cast<const char*>(data);
  std::vector<char> message;
  do {
    const int64_t piece = std::min(bytes, longestPiece);
    message.assign(static_cast<std::size_t>(headingBytes), 0);
    message.insert(message.end(), next, next + piece);
    sendMessage(message.data(), static_cast<int64_t>(message.size()), destination);
    next += piece;
    bytes -= piece;
  } while (bytes > 0);
}

void Ranks::receiveBytes(void* data, int64_t bytes, int32_t source) const {
  char* next = static_cast<char*>(data);
  std::vector<char> message;
  do {
    const int64_t piece = std::min(bytes, longestPiece);
    message.resize(static_cast<std::size_t>(headingBytes + piece));
    const int64_t received = receiveMessage(message.data(), headingBytes + piece, source);
    Heading heading;
    if (received <= headingBytes + piece && received >= headingBytes)
      std::memcpy(&heading, message.data(), sizeof heading);
    if (heading.isFailure != 0) throw RankFailed(receiveFailure(heading, source), source);
    if (received != headingBytes + piece) lost(source, "it does not answer as expected");
    if (piece > 0) std::memcpy(next, message.data() + headingBytes, static_cast<std::size_t>(piece));
    next += piece;
    bytes -= piece;
  } while (bytes > 0);
}

RankFailure Ranks::settle(const RankFailure& own, int32_t teller) const {
  for (int32_t other = 0; other < size_; ++other)
    if (other != rank_) tellFailure(own, other);
  RankFailure first = own;
  for (int32_t other = 0; other < size_; ++other) {
    if (other == rank_ || other == teller) continue;
    Heading heading;
    // results that were under way have no meaning any more; messages beyond the room for a heading are not stored
    while (receiveMessage(&heading, headingBytes, other) != headingBytes || heading.isFailure == 0) heading = {};
    RankFailure theirs = receiveFailure(heading, other);
    if (theirs.rank < first.rank) first = std::move(theirs);
  }
  return first;
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
