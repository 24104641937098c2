#include "store/local/item_writer.h"

#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <utility>

#include "store/local/files/item_file.h"
#include "store/local/text/content_line.h"

namespace tidemark::local {
namespace {

constexpr const char* itemIsGone = "The item is not in its file any more.";
constexpr const char* isThereAlready = "The calendar already has an item with this identifier.";
constexpr const char* itemSuffix = ".ics";
// With room for the suffix in what file systems allow.
constexpr std::size_t longestNameOfUid = 200;

UtcSeconds now() {
  return std::chrono::duration_cast<std::chrono::seconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

// What a file's name may hold without meaning anything to a shell, a sync tool or a file system.
bool isPlainNameByte(char byte) {
  constexpr std::string_view others = "-_@.";
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || others.find(byte) != std::string_view::npos;
}

// <UID>.ics, or a random name for a UID that makes no good one.
std::string fileNameFor(std::string_view uid) {
  const bool isPlain = !uid.empty() && uid.size() <= longestNameOfUid && uid.front() != '.' &&
                       std::all_of(uid.begin(), uid.end(), isPlainNameByte) &&
                       uid.find("sync-conflict") == std::string_view::npos;
  return (isPlain ? std::string(uid) : newUid()).append(itemSuffix);
}

Rewrite rewriteOf(Edit edit) {
  switch (edit.outcome) {
    case Edit::Outcome::changed:
      return {std::move(edit.text), std::nullopt};
    case Edit::Outcome::empty:
      return {};
    case Edit::Outcome::missing:
      break;
  }
  return {std::nullopt, itemIsGone};
}

bool isThere(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

// A file that a change makes on its way, beside the one that it changes: it goes again when the
// change fails.
class NewFile {
 public:
  NewFile(std::string directory, std::string name)
      : directory_(std::move(directory)), name_(std::move(name)) {}

  std::string path() const { return directory_ + '/' + name_; }

  // Again, when the change is made again: what was written before is out of date.
  StoreResult write(std::string_view text) {
    takeBack();
    StoreResult created = createItemFile(directory_, name_, text);
    isWritten_ = static_cast<bool>(created);
    return created;
  }

  void takeBack() {
    if (isWritten_) static_cast<void>(::unlink(path().c_str()));
    isWritten_ = false;
  }
  bool isWritten() const { return isWritten_; }

 private:
  std::string directory_;
  std::string name_;
  bool isWritten_ = false;
};

// The text without what every change writes anew.
std::string withoutStamps(std::string_view text) {
  std::string kept;
  ContentLineScanner scanner(text);
  while (const auto line = scanner.next()) {
    const bool isStamp = equalsIgnoringCase(line->name, "DTSTAMP") ||
                         equalsIgnoringCase(line->name, "LAST-MODIFIED") ||
                         equalsIgnoringCase(line->name, "SEQUENCE");
    if (!isStamp) kept.append(text.substr(line->begin, line->end - line->begin));
  }
  return kept;
}

// The file's text as it is; absent when it cannot be read.
std::optional<std::string> textOf(const ItemPlace& place) {
  std::optional<std::string> text;
  // A look through the writer, which is then refused.
  static_cast<void>(
      rewriteItemFile(place.directory, place.fileName, [&](std::string_view current) -> Rewrite {
        text = current;
        return {std::nullopt, isThereAlready};
      }));
  return text;
}

// Writes the item elsewhere, changed by `change`, and takes it out of its file.
template <typename Change>
StoreResult move(const ItemPlace& place, const ItemName& name, const MoveTarget& target,
                 const Change& change) {
  // A component without a UID goes by its file's name.
  NewFile file(target.directory,
               name.uid == place.fileName ? place.fileName : fileNameFor(name.uid));
  // Known before the file's lock is taken: two moves in opposite directions must not wait for each
  // other.
  std::optional<std::string> leftOver;
  if (target.existing) {
    const auto text = textOf({target.directory, *target.existing});
    if (!text) return StoreResult::failure(isThereAlready);
    leftOver = withoutStamps(*text);
  }
  StoreResult moved =
      rewriteItemFile(place.directory, place.fileName, [&](std::string_view current) -> Rewrite {
        const std::string item = extractItem(current, place.fileName, name.uid);
        Rewrite changed = item.empty() ? Rewrite{std::nullopt, itemIsGone} : change(item);
        if (!changed.text) return changed;
        if (leftOver) {
          if (withoutStamps(*changed.text) != *leftOver) return {std::nullopt, isThereAlready};
        } else if (StoreResult written = file.write(*changed.text); !written) {
          return {std::nullopt, std::move(written.error)};
        }
        return rewriteOf(withoutItem(current, place.fileName, name.uid));
      });
  if (!moved) file.takeBack();
  return moved;
}

// Changes a to-do's text; when that completes one that repeats, with a successor in a file of its
// own.
class TodoChanger {
 public:
  // `directory` is where the successor goes.
  TodoChanger(std::string directory, std::string_view fileName, const ItemName& name,
              const TodoChange& change)
      : directory_(std::move(directory)), fileName_(fileName), name_(name), change_(change) {}

  Rewrite operator()(std::string_view current) {
    TodoEdit edit = changeTodo(current, fileName_, name_, change_, now());
    if (edit.successor) {
      if (!successor_) successor_.emplace(directory_, edit.successor->uid + itemSuffix);
      // Its name follows from what it succeeds, so one that is there was made before.
      if (successor_->isWritten() || !isThere(successor_->path())) {
        if (StoreResult written = successor_->write(edit.successor->text); !written) {
          return {std::nullopt, std::move(written.error)};
        }
      }
    }
    return rewriteOf(std::move(edit));
  }

  // When the change failed.
  void takeBack() {
    if (successor_) successor_->takeBack();
  }

 private:
  std::string directory_;
  std::string_view fileName_;
  const ItemName& name_;
  const TodoChange& change_;
  std::optional<NewFile> successor_;
};

}  // namespace

std::string newUid() {
  std::array<unsigned char, 16> bytes{};
  // Never fails for so few bytes once the system is up.
  static_cast<void>(::getentropy(bytes.data(), bytes.size()));
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
  constexpr std::string_view hexDigits = "0123456789ABCDEF";
  std::string text;
  for (std::size_t index = 0; index < bytes.size(); ++index) {
    if (index == 4 || index == 6 || index == 8 || index == 10) text += '-';
    text += hexDigits[bytes[index] >> 4];
    text += hexDigits[bytes[index] & 0x0F];
  }
  return text;
}

StoreResult createItem(const std::string& directory, std::string_view uid,
                       const EventChange& event) {
  return createItemFile(directory, fileNameFor(uid), newEventText(uid, event, now()));
}

StoreResult createItem(const std::string& directory, std::string_view uid, const TodoChange& todo) {
  return createItemFile(directory, fileNameFor(uid), newTodoText(uid, todo, now()));
}

StoreResult changeItem(const ItemPlace& place, const ItemName& name, const EventChange& change) {
  return rewriteItemFile(place.directory, place.fileName, [&](std::string_view current) {
    return rewriteOf(changeEvent(current, place.fileName, name, change, now()));
  });
}

StoreResult changeItem(const ItemPlace& place, const ItemName& name, const TodoChange& change) {
  TodoChanger changer(place.directory, place.fileName, name, change);
  StoreResult changed = rewriteItemFile(place.directory, place.fileName, std::ref(changer));
  if (!changed) changer.takeBack();
  return changed;
}

StoreResult moveItem(const ItemPlace& place, const ItemName& name, const EventChange& change,
                     const MoveTarget& target) {
  return move(place, name, target, [&](std::string_view item) {
    // Alone in its text, and without a UID, it is what this says.
    return rewriteOf(changeEvent(item, name.uid, name, change, now()));
  });
}

StoreResult moveItem(const ItemPlace& place, const ItemName& name, const TodoChange& change,
                     const MoveTarget& target) {
  TodoChanger changer(target.directory, name.uid, name, change);
  StoreResult moved = move(place, name, target, std::ref(changer));
  if (!moved) changer.takeBack();
  return moved;
}

StoreResult removeItem(ItemKind kind, const ItemPlace& place, const ItemName& name) {
  return rewriteItemFile(place.directory, place.fileName, [&](std::string_view current) {
    return rewriteOf(kind == ItemKind::event ? removeEvent(current, place.fileName, name, now())
                                             : removeTodo(current, place.fileName, name, now()));
  });
}

}  // namespace tidemark::local
