#include "solver/parallel/ranks.h"

#include "communicator.h"
#include "dmpC_CommContainer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <deque>
#include <map>

namespace sharedanalysis::solver {
namespace {

constexpr int32_t messageType = 6, tag = 0;
constexpr int64_t longestPiece = int64_t{1} << 30; // of a message

// Every message begins with one.
struct Heading {
  int64_t exchange = 0;  // its number, when the message belongs to one
  int64_t bytes = 0;     // of all pieces of the message
  int32_t isFailure = 0; // then a message with the text comes after it
  int32_t rank = 0, code = 0, textBytes = 0;
};
constexpr int64_t headingBytes = sizeof(Heading);
using Message = std::vector<char>; // the heading, then what it carries

Heading headingOf(const Message& message) {
  Heading heading;
  std::memcpy(&heading, message.data(), sizeof heading);
  return heading;
}

// Of this process.
struct Mailbox {
  std::map<int32_t, std::deque<Message>> early; // messages of other exchanges that came before their time, by source
  int64_t exchanges = 0;
  Traffic sent;
  double longestWait = 0; // seconds
};
Mailbox& mailbox() {
  static Mailbox instance;
  return instance;
}

dmpC_Communicator& communicator() { return dmpC_CommContainer::GetCommunicator(); }

[[noreturn]] void lost(int32_t rank, const char* what) {
  throw RankLost("the connection to rank " + std::to_string(rank) + " is lost: " + what);
}

void sendMessage(const void* data, int64_t bytes, int32_t destination) {
  if (!communicator().Send(data, bytes, destination, messageType, tag)) lost(destination, "nothing can be sent");
  ++mailbox().sent.messages;
  mailbox().sent.bytes += bytes;
}

// Nothing has come from a rank, or from any.
[[noreturn]] void lostWaiting(int32_t source, std::chrono::steady_clock::time_point since) {
  const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - since;
  const double longest = mailbox().longestWait;
  if (longest <= 0 || waited.count() < longest) lost(source, "nothing can be received");
  const int32_t own = communicator().GetRank();
  const std::string whom = source == own ? "any other rank" : "rank " + std::to_string(source);
  throw RankLost("rank " + std::to_string(own) + " has waited " + std::to_string(std::llround(waited.count())) +
                 " s for " + whom + ", which does not answer (--rank-timeout)");
}

int64_t receiveMessage(void* data, int64_t capacity, int32_t source) {
  const auto start = std::chrono::steady_clock::now();
  const int64_t bytes = communicator().Receive(data, capacity, source, messageType, tag);
  if (bytes < 0) lostWaiting(source, start);
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
  Heading heading;
  heading.isFailure = 1;
  heading.rank = failure.rank;
  heading.code = failure.code;
  heading.textBytes = static_cast<int32_t>(failure.text.size());
  sendMessage(&heading, headingBytes, destination);
  sendMessage(failure.text.data(), heading.textBytes, destination);
}

// A message of known length that has just come, or RankFailed.
Message receiveWhole(int64_t bytes, int32_t source) {
  Message message(static_cast<std::size_t>(std::max(bytes, headingBytes)));
  const int64_t received = receiveMessage(message.data(), static_cast<int64_t>(message.size()), source);
  if (received > static_cast<int64_t>(message.size()) || received < headingBytes)
    lost(source, "it does not answer as expected");
  message.resize(static_cast<std::size_t>(received));
  const Heading heading = headingOf(message);
  if (heading.isFailure != 0) throw RankFailed(receiveFailure(heading, source), source);
  return message;
}

// The next message of a rank, one that came early before those to come.
Message nextMessage(int64_t bytes, int32_t source) {
  const auto early = mailbox().early.find(source);
  if (early == mailbox().early.end()) return receiveWhole(bytes, source);
  Message message = std::move(early->second.front());
  early->second.pop_front();
  if (early->second.empty()) mailbox().early.erase(early);
  return message;
}

// A message of this exchange, from whoever has sent one.
Message nextOf(int64_t exchange, int32_t& source) {
  for (auto& [from, messages] : mailbox().early)
    if (headingOf(messages.front()).exchange == exchange) return source = from, nextMessage(0, from);
  for (;;) {
    const auto start = std::chrono::steady_clock::now();
    const host::Transport::Waiting waiting = host::transport()->waitForAny(messageType, tag);
    if (waiting.source < 0) lostWaiting(source, start);
    Message message = receiveWhole(waiting.bytes, source = waiting.source);
    const auto early = mailbox().early.find(source);
    if (headingOf(message).exchange == exchange && early == mailbox().early.end()) return message;
    mailbox().early[source].push_back(std::move(message));
  }
}

void sendPieces(const void* data, int64_t bytes, int32_t destination, int64_t exchange) {
  const char* next = static_cast<const char*>(data);
  Heading heading;
  heading.exchange = exchange;
  heading.bytes = bytes;
  Message message;
  do {
    const int64_t piece = std::min(bytes, longestPiece);
    message.resize(static_cast<std::size_t>(headingBytes + piece));
    std::memcpy(message.data(), &heading, sizeof heading);
    if (piece > 0) std::memcpy(message.data() + headingBytes, next, static_cast<std::size_t>(piece));
    sendMessage(message.data(), static_cast<int64_t>(message.size()), destination);
    next += piece;
    bytes -= piece;
  } while (bytes > 0);
}

// NaN when either is, whichever comes first.
void takeSmaller(double& a, double b) {
  if (!(b >= a) && a == a) a = b;
}

} // namespace

Ranks::Ranks() : rank_(communicator().GetRank()), size_(communicator().GetSize()) {}

Traffic Ranks::traffic() { return mailbox().sent; }

void Ranks::waitAtMost(double seconds) {
  mailbox().longestWait = seconds;
  if (host::transport() != nullptr) host::transport()->waitAtMost(seconds);
}

void Ranks::sendBytes(const void* data, int64_t bytes, int32_t destination) const {
  sendPieces(data, bytes, destination, 0);
}

void Ranks::receiveBytes(void* data, int64_t bytes, int32_t source) const {
  char* next = static_cast<char*>(data);
  do {
    const int64_t piece = std::min(bytes, longestPiece);
    const Message message = nextMessage(headingBytes + piece, source);
    if (static_cast<int64_t>(message.size()) != headingBytes + piece) lost(source, "it does not answer as expected");
    if (piece > 0) std::memcpy(next, message.data() + headingBytes, static_cast<std::size_t>(piece));
    next += piece;
    bytes -= piece;
  } while (bytes > 0);
}

void Ranks::exchangeBytes(const std::vector<Bytes>& out, const Taker& take) const {
  // how many messages come is found by a sum, who has sent them by their arrival
  std::vector<int64_t> addressed(areSeveral() ? static_cast<std::size_t>(size_) : 0);
  const Bytes* own = nullptr;
  for (const Bytes& bytes : out) {
    if (bytes.rank == rank_)
      own = &bytes;
    else
      ++addressed[static_cast<std::size_t>(bytes.rank)];
  }
  const int64_t exchange = ++mailbox().exchanges;
  sum(addressed);
  // after it, so that none comes before a message of the sum
  for (const Bytes& bytes : out)
    if (bytes.rank != rank_) sendPieces(bytes.data, bytes.count, bytes.rank, exchange);
  std::map<int32_t, Message> in; // the pieces of each, one after the other
  for (int64_t k = areSeveral() ? addressed[static_cast<std::size_t>(rank_)] : 0; k > 0; --k) {
    int32_t source = rank_;
    const Message first = nextOf(exchange, source);
    Message& whole = in[source];
    const int64_t all = headingOf(first).bytes;
    whole.reserve(static_cast<std::size_t>(all));
    whole.assign(first.begin() + headingBytes, first.end());
    while (static_cast<int64_t>(whole.size()) < all) {
      const Message more =
          nextMessage(headingBytes + std::min(all - static_cast<int64_t>(whole.size()), longestPiece), source);
      whole.insert(whole.end(), more.begin() + headingBytes, more.end());
    }
  }
  const auto takeOwn = [&] {
    if (own) take(rank_, static_cast<const char*>(own->data), own->count);
    own = nullptr;
  };
  for (auto& [source, bytes] : in) {
    if (source > rank_) takeOwn();
    take(source, bytes.data(), static_cast<int64_t>(bytes.size()));
    bytes = {};
  }
  takeOwn();
}

RankFailure Ranks::settle(const RankFailure& own, int32_t teller) const {
  for (int32_t other = 0; other < size_; ++other)
    if (other != rank_) tellFailure(own, other);
  mailbox().early.clear();
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

// A binomial tree.
void Ranks::broadcastBytes(void* data, int64_t bytes) const {
  for (int32_t reached = 1; reached < size_; reached *= 2) {
    if (rank_ < reached && rank_ + reached < size_) sendBytes(data, bytes, rank_ + reached);
    if (rank_ >= reached && rank_ < 2 * reached) receiveBytes(data, bytes, rank_ - reached);
  }
}

// Recursive doubling: ranks beyond the largest power of two have a partner below it who speaks for them.
template <class T, class Combine>
void Ranks::reduce(std::vector<T>& values, Combine combine) const {
  int32_t power = 1;
  while (2 * power <= size_) power *= 2;
  const int32_t beyond = size_ - power;
  std::vector<T> theirs(values.size());
  // in the same order on both sides, so that both have the same bits
  const auto combineWith = [&](int32_t other) {
    receive(theirs, other);
    if (other < rank_) values.swap(theirs);
    for (std::size_t k = 0; k < values.size(); ++k) combine(values[k], theirs[k]);
  };
  if (rank_ >= power) {
    send(values, rank_ - power);
    return receive(values, rank_ - power);
  }
  if (rank_ < beyond) combineWith(rank_ + power);
  for (int32_t distance = 1; distance < power; distance *= 2) {
    send(values, rank_ ^ distance);
    combineWith(rank_ ^ distance);
  }
  if (rank_ < beyond) send(values, rank_ + power);
}

void Ranks::smallest(std::vector<double>& values) const { reduce(values, takeSmaller); }

void Ranks::smallest(std::vector<int64_t>& values) const {
  reduce(values, [](int64_t& a, int64_t b) { a = std::min(a, b); });
}

void Ranks::sum(std::vector<int64_t>& values) const {
  reduce(values,
         [](int64_t& a, int64_t b) { a = static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b)); });
}

int64_t Ranks::sum(int64_t value) const {
  std::vector<int64_t> one{value};
  sum(one);
  return one[0];
}

bool Ranks::allAgree(bool own) const {
  std::vector<int64_t> agreement{own ? 1 : 0};
  smallest(agreement);
  return agreement[0] == 1;
}

} // namespace sharedanalysis::solver
