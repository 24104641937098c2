// Answers that are records and nothing else, and those of changes.
#pragma once

#include <cstddef>
#include <utility>

#include "codec/records.h"
#include "host/reply_channel.h"

namespace tidemark {

// {key: record}
template <std::size_t size, typename Item>
void replyWithRecord(RequestId id, const char (&key)[size], const Item& item) {
  ReplyObject object;
  object.writer().key(key);
  RecordEncoder(object.writer()).encode(item);
  reply(id, std::move(object));
}

// What a save comes to: {key: record}, or the store's refusal.
template <std::size_t size, typename Item>
void replyToSave(RequestId id, const StoreResult& saved, const char (&key)[size],
                 const Item& item) {
  if (!saved) return fail(id, *saved.error);
  replyWithRecord(id, key, item);
}

// What a removal comes to: {"ok": true}, or the store's refusal.
inline void replyToRemoval(RequestId id, const StoreResult& removed) {
  if (!removed) return fail(id, *removed.error);
  ReplyObject object;
  object.add("ok", true);
  reply(id, std::move(object));
}

// {key: [record, ...]}; `items` holds pointers.
template <std::size_t size, typename Items>
void replyWithRecords(RequestId id, const char (&key)[size], const Items& items) {
  ReplyObject object;
  JsonWriter& writer = object.writer();
  writer.key(key);
  writer.beginArray();
  RecordEncoder encoder(writer);
  for (const auto& item : items) encoder.encode(*item);
  writer.endArray();
  reply(id, std::move(object));
}

}  // namespace tidemark
