// The state of a run as a row of words.  One `visit` of a structure counts, saves and restores it, so that these cannot disagree.
#pragma once

#include "solver/model/model.h"

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

namespace sharedanalysis::solver {

class Archive {
public:
  enum class Task { Count, Save, Restore };

  Archive() = default; // counts
  // Saves into `words` or restores from them, `size` of them at most.
  Archive(Task task, double* words, std::size_t size) : task_(task), words_(words), size_(size) {}

  bool isRestoring() const { return task_ == Task::Restore; }
  std::size_t count() const { return next_; }

  void operator()(double& value) {
    if (task_ != Task::Count && next_ >= size_) throw InputError("the state ends too early");
    if (task_ == Task::Save) words_[next_] = value;
    if (task_ == Task::Restore) value = words_[next_];
    ++next_;
  }
  // By its bits.
  void operator()(int64_t& value) {
    double word = std::bit_cast<double>(value);
    (*this)(word);
    value = std::bit_cast<int64_t>(word);
  }
  void operator()(std::array<double, 3>& values) {
    for (double& value : values) (*this)(value);
  }
  void operator()(std::vector<double>& values) {
    for (double& value : values) (*this)(value);
  }
  template <class First, class Second, class... More>
  void operator()(First& first, Second& second, More&... more) {
    (*this)(first);
    (*this)(second);
    if constexpr (sizeof...(more) > 0) (*this)(more...);
  }
  // What arrays of `points` points, components outermost, have of one point.
  template <class... Arrays>
  void ofPoint(int32_t point, int32_t points, Arrays&... arrays) {
    const auto visit = [&](auto& values) {
      for (auto at = static_cast<std::size_t>(point); at < values.size(); at += static_cast<std::size_t>(points))
        (*this)(values[at]);
    };
    (visit(arrays), ...);
  }

private:
  Task task_ = Task::Count;
  double* words_ = nullptr;
  std::size_t size_ = 0, next_ = 0;
};

} // namespace sharedanalysis::solver
