// tidemark-cal-sim SCENARIO: the bridge over a store that a scenario fills. Everything but the
// store is the bridge's own.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <variant>

#include "host/bridge.h"
#include "simulator/scenario.h"
#include "simulator/scenario_store.h"

namespace {

constexpr int unusableScenario = 2;

// One line, whatever the message quotes.
int refuse(std::string message) {
  std::replace_if(
      message.begin(), message.end(), [](unsigned char c) { return c < 0x20; }, ' ');
  std::fprintf(stderr, "tidemark-cal-sim: %s\n", message.c_str());
  return unusableScenario;
}

std::optional<std::string> contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream contents;
  contents << file.rdbuf();
  // A directory can be opened and fails when it is read, which the copy reports.
  if (!file.is_open() || contents.bad()) return std::nullopt;
  return contents.str();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return refuse("usage: tidemark-cal-sim SCENARIO");
  const std::string path = argv[1];
  const std::optional<std::string> text = contentsOf(path);
  if (!text) return refuse(path + ": cannot be read");
  auto scenario = tidemark::parseScenario(*text);
  if (const auto* error = std::get_if<tidemark::ScenarioError>(&scenario)) {
    return refuse(path + ": " + error->message);
  }
  return tidemark::runBridge([&scenario]() -> std::unique_ptr<tidemark::Store> {
    return tidemark::makeScenarioStore(std::move(std::get<tidemark::Scenario>(scenario)));
  });
}
