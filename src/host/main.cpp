#include "host/bridge.h"
#include "host/composition.h"

int main() {
  return tidemark::runBridge(tidemark::makeStore);
}
