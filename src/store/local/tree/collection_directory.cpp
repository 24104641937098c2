#include "store/local/tree/collection_directory.h"

#include <sys/stat.h>

namespace tidemark::local {
namespace {

std::string titleOf(const CollectionDirectory& directory) {
  return directory.metadata.displayName.value_or(readableText(directory.name));
}

}  // namespace

std::optional<DirectoryIdentity> identityOf(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
  const bool isLink = S_ISLNK(status.st_mode);
  if (isLink && ::stat(path.c_str(), &status) != 0) return std::nullopt;
  if (!S_ISDIR(status.st_mode)) return std::nullopt;
  return DirectoryIdentity{status.st_dev, status.st_ino, isLink};
}

std::string identifierOf(const CollectionDirectory& collection) {
  return readableText(collection.depth > 1 ? collection.parent->name + "/" + collection.name
                                           : collection.name);
}

LocalCalendarRef calendarOf(const CollectionDirectory& collection) {
  const bool isInAccount = collection.depth > 1;
  auto calendar = std::make_shared<LocalCalendar>();
  calendar->calendarIdentifier = identifierOf(collection);
  calendar->title = titleOf(collection);
  calendar->source =
      Source{isInAccount ? titleOf(*collection.parent) : std::string("On This Computer"), 0};
  calendar->allowsContentModifications = collection.allowsContentModifications;
  calendar->color = collection.metadata.color;
  calendar->directory = collection.path;
  calendar->number = collection.number;
  calendar->order = collection.metadata.order;
  if (collection.metadata.saysComponents()) {
    calendar->holdsEvents = collection.metadata.namesEvents;
    calendar->holdsReminders = collection.metadata.namesTodos;
  } else {
    // One that holds both or nothing is both.
    calendar->holdsEvents = collection.items->hasEvents() || !collection.items->hasTodos();
    calendar->holdsReminders = collection.items->hasTodos() || !collection.items->hasEvents();
  }
  return calendar;
}

}  // namespace tidemark::local
