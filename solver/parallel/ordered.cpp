#include "solver/parallel/ordered.h"

#include "solver/model/memory.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace sharedanalysis::solver {
namespace {

// A message is a row of words: the number of runs, place and count of each, then the values of all.
using Words = std::vector<uint64_t>;
static_assert(sizeof(double) == sizeof(uint64_t));

// Entities of consecutive places.
struct Run {
  int64_t place = 0, count = 0;
  const uint64_t* values = nullptr;
};

std::vector<Run> runsOf(const std::vector<int64_t>& places, std::size_t first, std::size_t end) {
  std::vector<Run> runs;
  for (std::size_t k = first; k < end; ++k) {
    if (runs.empty() || runs.back().place + runs.back().count != places[k]) runs.push_back({places[k], 0});
    ++runs.back().count;
  }
  return runs;
}

// Those of all messages, in their order; they must cover the places from `first` to `end` once.
std::vector<Run> runsOf(const std::vector<Parcel<uint64_t>>& parcels, std::size_t components, int64_t first,
                        int64_t end) {
  std::vector<Run> runs;
  for (const Parcel<uint64_t>& parcel : parcels) {
    const Words& words = parcel.values;
    const std::size_t count = static_cast<std::size_t>(words[0]);
    const uint64_t* values = words.data() + 1 + 2 * count;
    for (std::size_t k = 0; k < count; ++k) {
      runs.push_back({static_cast<int64_t>(words[1 + 2 * k]), static_cast<int64_t>(words[2 + 2 * k]), values});
      values += components * static_cast<std::size_t>(runs.back().count);
    }
  }
  std::sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) { return a.place < b.place; });
  for (const Run& run : runs) {
    if (run.place != first)
      throw std::logic_error("entity " + std::to_string(std::min(run.place, first)) + " is of " +
                             (run.place < first ? "several ranks" : "no rank"));
    first += run.count;
  }
  if (first != end) throw std::logic_error("entity " + std::to_string(first) + " is of no rank");
  return runs;
}

std::size_t sizeOf(int64_t count) { return static_cast<std::size_t>(count); }

// A whole mesh on several ranks is the root's.
bool isOwn(const Mesh& mesh, Kind kind, const Ranks& ranks, int32_t index) {
  if (!mesh.part) return ranks.isRoot();
  return kind == Kind::Node ? mesh.ownsNode(index) : mesh.ownsElement(index);
}

int64_t positionOf(const Mesh& mesh, Kind kind, int32_t index) {
  return kind == Kind::Node ? mesh.nodePosition(index) : mesh.elementPosition(index);
}

// The place of each of the own positions among those of all ranks, list by list, and how many there are in each.
struct Places {
  std::vector<std::vector<int64_t>> own;
  std::vector<int64_t> whole;
};

// Every rank sorts the positions of one share of the whole.
Places placesAmongAll(std::vector<std::vector<int64_t>> positions, int64_t whole, const Ranks& ranks) {
  const std::size_t lists = positions.size();
  const int64_t share = std::max<int64_t>(1, (whole + ranks.size() - 1) / ranks.size());
  std::vector<Parcel<int64_t>> out;
  std::vector<std::size_t> next(lists); // of each list
  for (int32_t rank = 0; rank < ranks.size(); ++rank) {
    Parcel<int64_t> parcel{rank}; // list, count, positions
    for (std::size_t list = 0; list < lists; ++list) {
      const auto begin = positions[list].begin() + static_cast<std::ptrdiff_t>(next[list]);
      const auto end = std::lower_bound(begin, positions[list].end(), share * (rank + int64_t{1}));
      if (begin == end) continue;
      parcel.values.insert(parcel.values.end(), {static_cast<int64_t>(list), end - begin});
      parcel.values.insert(parcel.values.end(), begin, end);
      next[list] += sizeOf(end - begin);
    }
    if (!parcel.values.empty()) out.push_back(std::move(parcel));
  }
  release(positions);
  std::vector<Parcel<int64_t>> asked = ranks.exchange(out);
  release(out);
  const auto eachList = [&](const auto& visit) {
    for (Parcel<int64_t>& parcel : asked)
      for (std::size_t at = 0; at < parcel.values.size(); at += 2 + sizeOf(parcel.values[at + 1]))
        visit(sizeOf(parcel.values[at]), std::span(parcel.values).subspan(at + 2, sizeOf(parcel.values[at + 1])));
  };
  std::vector<std::vector<int64_t>> sorted(lists);
  eachList([&](std::size_t list, std::span<int64_t> some) {
    sorted[list].insert(sorted[list].end(), some.begin(), some.end());
  });
  std::vector<int64_t> counts;
  for (std::vector<int64_t>& list : sorted) {
    std::sort(list.begin(), list.end());
    counts.push_back(static_cast<int64_t>(list.size()));
  }
  const std::vector<int64_t> all = ranks.joined(counts);
  Places places{std::vector<std::vector<int64_t>>(lists), std::vector<int64_t>(lists)};
  std::vector<int64_t> before(lists); // of the ranks before this one
  for (std::size_t k = 0; k < all.size(); ++k) {
    places.whole[k % lists] += all[k];
    if (k / lists < sizeOf(ranks.rank())) before[k % lists] += all[k];
  }
  eachList([&](std::size_t list, std::span<int64_t> some) {
    auto at = sorted[list].begin();
    for (int64_t& position : some) {
      at = std::lower_bound(at, sorted[list].end(), position);
      position = before[list] + (at - sorted[list].begin());
    }
  });
  release(sorted);
  // the answers come in the order of the questions
  for (const Parcel<int64_t>& answer : ranks.exchange(asked))
    for (std::size_t at = 0; at < answer.values.size();) {
      const auto begin = answer.values.begin() + static_cast<std::ptrdiff_t>(at) + 2;
      std::vector<int64_t>& own = places.own[sizeOf(answer.values[at])];
      at += 2 + sizeOf(answer.values[at + 1]);
      own.insert(own.end(), begin, answer.values.begin() + static_cast<std::ptrdiff_t>(at));
    }
  return places;
}

} // namespace

Ordered::Ordered(const Ranks& ranks, std::vector<int64_t> places, int64_t whole)
    : ranks_(ranks), places_(std::move(places)), whole_(whole) {}

int64_t Ordered::sliceOf(int components) {
  constexpr int64_t mostWords = int64_t{1} << 16, mostEntities = int64_t{1} << 16;
  return std::clamp<int64_t>(mostWords / components, 1, mostEntities);
}

template <class T>
void Ordered::stream(int components, const Give<T>& give, const Take<T>& take, int64_t chunk) const {
  if (chunk <= 0) chunk = std::max<int64_t>(whole_, 1);
  if (!isAlone_) {
    for (int64_t first = 0; first * chunk < whole_; first += ranks_.size())
      streamSlices(components, give, take, first, chunk);
    return;
  }
  std::vector<T> values;
  for (int64_t first = 0; first < whole_;) {
    const int64_t end = std::min({whole_, (first / chunk + 1) * chunk, first + sliceOf(components)});
    values.resize(static_cast<std::size_t>(components) * sizeOf(end - first));
    give(sizeOf(first), sizeOf(end), values.data());
    take(first, values);
    first = end;
  }
}

// As many chunks as there are ranks, all at once.
template <class T>
void Ordered::streamSlices(int components, const Give<T>& give, const Take<T>& take, int64_t firstChunk,
                           int64_t chunk) const {
  const std::size_t width = static_cast<std::size_t>(components);
  const int64_t length = sliceOf(components);
  const auto first = [&](int32_t taker, int64_t at) { return (firstChunk + taker) * chunk + at; };
  const auto end = [&](int32_t taker, int64_t at) {
    return std::min({whole_, first(taker, at) + length, first(taker, chunk)});
  };
  for (int64_t at = 0; at < chunk && first(0, at) < whole_; at += length) {
    std::vector<Parcel<uint64_t>> out;
    for (int32_t taker = 0; taker < ranks_.size() && first(taker, at) < whole_; ++taker) {
      const auto place = [&](int64_t p) {
        return static_cast<std::size_t>(std::lower_bound(places_.begin(), places_.end(), p) - places_.begin());
      };
      const std::size_t ownFirst = place(first(taker, at)), ownEnd = place(end(taker, at));
      if (ownFirst == ownEnd) continue;
      Words words{0};
      for (const Run& run : runsOf(places_, ownFirst, ownEnd))
        words.insert(words.end(), {static_cast<uint64_t>(run.place), static_cast<uint64_t>(run.count)});
      words[0] = words.size() / 2;
      std::vector<T> values(width * (ownEnd - ownFirst));
      give(ownFirst, ownEnd, values.data());
      const std::size_t head = words.size();
      words.resize(head + values.size());
      std::memcpy(words.data() + head, values.data(), sizeof(T) * values.size());
      out.push_back({taker, std::move(words)});
    }
    const std::vector<Parcel<uint64_t>> in = ranks_.exchange(out);
    out.clear();
    if (first(ranks_.rank(), at) >= whole_) continue;
    const int64_t ownFirst = first(ranks_.rank(), at), ownEnd = end(ranks_.rank(), at);
    std::vector<T> values(width * sizeOf(ownEnd - ownFirst));
    for (const Run& run : runsOf(in, width, ownFirst, ownEnd))
      std::memcpy(values.data() + width * sizeOf(run.place - ownFirst), run.values,
                  sizeof(T) * width * sizeOf(run.count));
    take(ownFirst, values);
  }
}

template void Ordered::stream<double>(int, const Give<double>&, const Take<double>&, int64_t) const;
template void Ordered::stream<int64_t>(int, const Give<int64_t>&, const Take<int64_t>&, int64_t) const;

Listing listingOf(const Mesh& mesh, Kind kind, const Ranks& ranks) {
  const int32_t count = kind == Kind::Node ? mesh.nodes() : mesh.elements();
  if (!mesh.part && !ranks.areSeveral()) {
    Listing all{std::vector<int32_t>(sizeOf(count)), Ordered(count)};
    std::iota(all.own.begin(), all.own.end(), 0);
    return all;
  }
  std::vector<int32_t> own;
  std::vector<int64_t> places;
  for (int32_t k = 0; k < count; ++k)
    if (isOwn(mesh, kind, ranks, k)) {
      own.push_back(k);
      places.push_back(positionOf(mesh, kind, k));
    }
  return {std::move(own),
          Ordered(ranks, std::move(places), kind == Kind::Node ? mesh.wholeNodes() : mesh.wholeElements())};
}

std::vector<Listing> listingsOf(const Mesh& mesh, Kind kind, const std::vector<const std::vector<int32_t>*>& members,
                                const Ranks& ranks) {
  std::vector<Listing> listings;
  if (!mesh.part && !ranks.areSeveral()) {
    for (const std::vector<int32_t>* list : members)
      listings.push_back({*list, Ordered(static_cast<int64_t>(list->size()))});
    return listings;
  }
  std::vector<std::vector<int32_t>> own(members.size());
  std::vector<std::vector<int64_t>> positions(members.size());
  for (std::size_t list = 0; list < members.size(); ++list)
    for (const int32_t index : *members[list])
      if (isOwn(mesh, kind, ranks, index)) {
        own[list].push_back(index);
        positions[list].push_back(positionOf(mesh, kind, index));
      }
  Places places =
      placesAmongAll(std::move(positions), kind == Kind::Node ? mesh.wholeNodes() : mesh.wholeElements(), ranks);
  for (std::size_t list = 0; list < members.size(); ++list)
    listings.push_back({std::move(own[list]), Ordered(ranks, std::move(places.own[list]), places.whole[list])});
  return listings;
}

} // namespace sharedanalysis::solver
