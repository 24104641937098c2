// The store of the simulator: the in-memory store, and around it what the scenario makes late or
// wrong.
//
// Delays begin with the call and pass on threads of the store's own; nothing waits for them. A late
// fetch reads the store when its time has come, so that it shows what changed meanwhile.
#pragma once

#include <memory>

#include "simulator/scenario.h"
#include "store/store.h"

namespace tidemark {

// The simulation starts with this call.
std::unique_ptr<Store> makeScenarioStore(Scenario scenario);

}  // namespace tidemark
