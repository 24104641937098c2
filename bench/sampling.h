// Samples of a figure and of its limit, taken alternately. One thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tidemark::bench {

class Samples {
 public:
  void add(double value) { values_.push_back(value); }
  // 0.5 is the median. At least one sample was added.
  double percentile(double fraction) const {
    std::vector<double> sorted = values_;
    std::sort(sorted.begin(), sorted.end());
    const auto last = static_cast<double>(sorted.size() - 1);
    return sorted[static_cast<std::size_t>(last * fraction + 0.5)];
  }
  double median() const { return percentile(0.5); }

 private:
  std::vector<double> values_;
};

struct Pair {
  Samples measured;
  Samples limit;
};

}  // namespace tidemark::bench
