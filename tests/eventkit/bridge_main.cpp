// tidemark-cal-eventkit SCENARIO: the whole bridge with the EventKit store, and in the place of
// EventKit what a scenario of the simulator says.
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <variant>

#include "host/bridge.h"
#include "simulator/scenario.h"
#include "simulator/scenario_store.h"
#include "store/eventkit/eventkit_store.h"
#include "tests/eventkit/stand_in/stand_in.h"

int main(int argc, char** argv) {
  if (argc != 2) return EXIT_FAILURE;
  std::ifstream file(argv[1], std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  auto scenario = tidemark::parseScenario(text);
  if (!std::holds_alternative<tidemark::Scenario>(scenario)) return EXIT_FAILURE;
  return tidemark::runBridge([&] {
    // To the end of the process, as the platform is.
    tidemark::eventkit::serve(
        *tidemark::makeScenarioStore(std::move(std::get<tidemark::Scenario>(scenario))).release());
    tidemark::eventkit::postChanges();
    return tidemark::makeEventKitStore();
  });
}
