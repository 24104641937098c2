#include "tests/contract/memory_fixture.h"

namespace tidemark {
namespace {

const StoreForm memory{"memory", [] { return std::make_unique<MemoryFixture>(); }};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Memory, StoreContract, testing::Values(memory));

}  // namespace tidemark
