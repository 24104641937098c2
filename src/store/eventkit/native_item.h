// What events and reminders have in common: values that were read once, and the native object that
// takes the changes.
#pragma once

#import <EventKit/EventKit.h>

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "store/eventkit/foundation_values.h"
#include "store/eventkit/session.h"
#include "store/store.h"

namespace tidemark {

// `Native` is EKEvent or EKReminder. Getters of the derived class read its own values and need no
// lock; all else takes the session's.
template <typename Native>
class NativeItem {
 public:
  NativeItem(Session& session, Native* native, bool isNew)
      : session_(session), native_(native), generation_(session.generation), isNew_(isNew) {}
  NativeItem(const NativeItem&) = delete;
  NativeItem& operator=(const NativeItem&) = delete;

  // `operation(native, &error)` is a save or a removal. One that says no without an error had
  // nothing to do.
  template <typename Operation>
  StoreResult save(const Operation& operation) {
    const std::lock_guard guard(session_.lock);
    StoreResult result = write(operation);
    if (result) {
      isNew_ = false;
      changes_.clear();
      static_cast<void>(exceptionOf([&] { read(native_); }));
    }
    return result;
  }
  template <typename Operation>
  StoreResult remove(const Operation& operation) {
    const std::lock_guard guard(session_.lock);
    return write(operation);
  }

 protected:
  virtual ~NativeItem() {
    const std::lock_guard guard(session_.lock);
    static_cast<void>(exceptionOf([&] {
      // What was not saved must not find its way into a later save.
      if (!changes_.empty() && !isNew_ && generation_ == session_.generation) [native_ rollback];
      native_ = nil;
    }));
  }

  using Change = std::function<void(Native*)>;
  void change(Change change) {
    const std::lock_guard guard(session_.lock);
    auto raised = exceptionOf([&] {
      Native* const native = current();
      changes_.push_back(std::move(change));
      changes_.back()(native);
      if (native != nil) read(native);
    });
    if (raised) failure_ = std::move(raised);
  }

  // Takes the values of the native object.
  virtual void read(Native* native) = 0;
  // The native object of these values, fetched anew or, for an item that was never saved, made
  // anew. Null when it is no more.
  virtual Native* find() = 0;

  bool isNew() const { return isNew_; }
  Session& session() const { return session_; }

 private:
  // With the lock held.
  Native* current() {
    if (generation_ != session_.generation) {
      native_ = find();
      generation_ = session_.generation;
      for (const Change& change : changes_) change(native_);
    }
    return native_;
  }

  template <typename Operation>
  StoreResult write(const Operation& operation) {
    if (failure_) return StoreResult::failure(*failure_);
    std::optional<std::string> error;
    auto raised = exceptionOf([&] {
      Native* const native = current();
      NSError* __autoreleasing problem = nil;
      if (native == nil) {
        error = "The item does not exist.";
      } else if (!operation(native, &problem) && problem != nil) {
        error = textOf(problem.localizedDescription);
      }
    });
    return {raised ? std::move(raised) : std::move(error)};
  }

  Session& session_;
  Native* native_;
  unsigned generation_;
  bool isNew_;
  std::vector<Change> changes_;         // since the item was fetched or saved
  std::optional<std::string> failure_;  // a change that was not taken
};

}  // namespace tidemark
