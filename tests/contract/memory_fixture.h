// The in-memory store under the contract, and whatever is made over it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "store/memory/memory_store.h"
#include "tests/contract/store_contract.h"

namespace tidemark {

class MemoryFixture : public StoreFixture {
 public:
  std::string addCalendar(const SeedCalendar& seed) override;
  std::string addEvent(const SeedEvent& seed) override;
  std::string addReminder(const SeedReminder& seed) override;
  void removeEvent(const std::string& identifier) override;
  Store& store() override;

 protected:
  // Waits for what the store's threads are doing; they do nothing after that.
  void endMemoryStore() { store_.reset(); }

 private:
  template <typename Edit>
  void change(const Edit& edit);
  CalendarRef calendarNamed(const std::string& identifier) const;
  std::string nextName(const char* kind);

  MemoryContents seeds_;
  std::vector<CalendarRef> calendars_;
  int named_ = 0;
  std::unique_ptr<MemoryStore> store_;
};

}  // namespace tidemark
