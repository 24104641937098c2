// Measures the bridge against what the machine itself can do, and prints one table. See
// docs/performance.md.
//
// measure --bridge PROGRAM --programs FOLDER --generator SCRIPT --scratch FOLDER [--items N]...
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "figures.h"
#include "process.h"

namespace tidemark::bench {
namespace {

namespace fs = std::filesystem;

struct Arguments {
  Programs programs;
  fs::path generator;
  fs::path scratch;
  std::vector<std::size_t> itemCounts;
};

Arguments parse(int count, char** values) {
  Arguments arguments;
  for (int i = 1; i + 1 < count; i += 2) {
    const std::string name = values[i];
    const std::string value = values[i + 1];
    if (name == "--bridge") {
      arguments.programs.bridge = value;
    } else if (name == "--programs") {
      arguments.programs.limits = value;
    } else if (name == "--generator") {
      arguments.generator = value;
    } else if (name == "--scratch") {
      arguments.scratch = value;
    } else if (name == "--items") {
      arguments.itemCounts.push_back(std::strtoul(value.c_str(), nullptr, 10));
    } else {
      giveUp("unknown argument " + name);
    }
  }
  if (arguments.itemCounts.empty()) arguments.itemCounts = {1000, 10'000, 100'000};
  return arguments;
}

// Generated once and kept. The mark is written last, so that half a store is made again.
StoreUnderTest prepareStore(const Arguments& arguments, std::size_t itemCount) {
  StoreUnderTest store;
  store.itemCount = itemCount;
  store.label = std::to_string(itemCount);
  store.dataHome = fs::absolute(arguments.scratch / ("store-" + store.label));
  const fs::path mark = store.dataHome / "complete";
  if (fs::exists(mark) && fs::last_write_time(mark) > fs::last_write_time(arguments.generator)) {
    return store;
  }
  std::printf("generating %s items ...\n", store.label.c_str());
  std::fflush(stdout);
  fs::remove_all(store.dataHome);
  Process generator({"/usr/bin/env", "python3", arguments.generator.string(), store.label,
                     store.root().string()});
  generator.finish();
  Process touch({"/usr/bin/env", "touch", mark.string()});
  touch.finish();
  return store;
}

std::string shown(Unit unit, double value) {
  char text[32];
  switch (unit) {
    case Unit::count:
      std::snprintf(text, sizeof text, "%.0f", value);
      break;
    case Unit::bytes:
      std::snprintf(text, sizeof text, "%.2f MB", value / 1e6);
      break;
    case Unit::seconds:
      if (value < 1e-3) {
        std::snprintf(text, sizeof text, "%.1f us", value * 1e6);
      } else {
        std::snprintf(text, sizeof text, "%.2f ms", value * 1e3);
      }
      break;
  }
  return text;
}

void print(const Figure& figure) {
  const bool hasLimit = figure.limit > 0;
  const double ratio = hasLimit ? figure.measured / figure.limit : figure.measured;
  char ratioText[32] = "", targetText[32];
  if (hasLimit) std::snprintf(ratioText, sizeof ratioText, "%.2f", ratio);
  std::snprintf(targetText, sizeof targetText, "%g", figure.target);
  std::printf("%-42s %7s %12s %12s %7s %7s  %s\n", figure.name.c_str(), figure.store.c_str(),
              shown(figure.unit, figure.measured).c_str(),
              hasLimit ? shown(figure.unit, figure.limit).c_str() : "", ratioText, targetText,
              ratio <= figure.target ? "met" : "NOT MET");
  std::fflush(stdout);
}

int run(int count, char** values) {
  const Arguments arguments = parse(count, values);
  fs::create_directories(arguments.scratch);
  std::vector<StoreUnderTest> stores;
  for (std::size_t itemCount : arguments.itemCounts) {
    stores.push_back(prepareStore(arguments, itemCount));
  }
  std::printf("%-42s %7s %12s %12s %7s %7s\n", "figure", "items", "measured", "limit", "ratio",
              "target");
  std::fflush(stdout);
  for (const auto measure : {measureStart, measureFirstYear, measureQueries, measureChanges,
                             measureWriting, measureResources}) {
    for (const StoreUnderTest& store : stores) {
      for (const Figure& figure : measure(arguments.programs, store)) print(figure);
    }
  }
  return 0;
}

}  // namespace
}  // namespace tidemark::bench

int main(int argc, char** argv) {
  return tidemark::bench::run(argc, argv);
}
