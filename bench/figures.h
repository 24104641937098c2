// The figures: each is measured in turn with its limit, in one run, since only their ratio means
// anything on a machine that other people use too.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tidemark::bench {

struct Programs {
  std::filesystem::path bridge;
  std::filesystem::path limits;  // the folder of the limit programs
};

// A generated store: <dataHome>/calendars is its root.
struct StoreUnderTest {
  std::string label;
  std::size_t itemCount = 0;
  std::filesystem::path dataHome;

  std::filesystem::path root() const { return dataHome / "calendars"; }
};

enum class Unit { seconds, bytes, count };

struct Figure {
  std::string name;
  std::string store;
  Unit unit = Unit::seconds;
  double measured = 0;
  double limit = 0;
  // The highest ratio of measured to limit that is good enough; where `limit` is 0, the highest
  // measured value.
  double target = 0;
};

// Every figure over one store. The store is changed while it is measured and left as it was.
std::vector<Figure> measureStart(const Programs& programs, const StoreUnderTest& store);
std::vector<Figure> measureFirstYear(const Programs& programs, const StoreUnderTest& store);
std::vector<Figure> measureQueries(const Programs& programs, const StoreUnderTest& store);
std::vector<Figure> measureChanges(const Programs& programs, const StoreUnderTest& store);
std::vector<Figure> measureWriting(const Programs& programs, const StoreUnderTest& store);
std::vector<Figure> measureResources(const Programs& programs, const StoreUnderTest& store);

}  // namespace tidemark::bench
