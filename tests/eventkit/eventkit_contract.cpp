#include "tests/eventkit/eventkit_fixture.h"

namespace tidemark {
namespace {

const StoreForm eventKit{"eventkit", [] { return std::make_unique<EventKitFixture>(); }};

}  // namespace

INSTANTIATE_TEST_SUITE_P(EventKit, StoreContract, testing::Values(eventKit));

}  // namespace tidemark
