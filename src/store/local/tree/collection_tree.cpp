#include "store/local/tree/collection_tree.h"

#include <poll.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "store/local/tree/file_names.h"
#include "store/local/tree/root.h"

namespace tidemark::local {
namespace {

// Changes that arrive while changes are read in are read in too, but not for ever.
constexpr int maximumRounds = 4;

// A file that is emptied is seen to be empty before the kernel tells of it: it gives the blocks
// back in between.
constexpr int newsOfTruncationMilliseconds = 100;

std::string parentOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

// Most file systems count the entry ".." of each directory below as a link; the others are told
// apart when all is read.
bool mayHoldDirectories(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && status.st_nlink > 2;
}

// The nearest directory above the path that exists.
std::string nearestAncestor(const std::string& path) {
  std::string ancestor = parentOf(path);
  while (ancestor != "/" && !identityOf(ancestor)) ancestor = parentOf(ancestor);
  return ancestor;
}

bool isNewsOfNames(WatchEvent::Kind kind) {
  return kind == WatchEvent::Kind::created || kind == WatchEvent::Kind::appeared ||
         kind == WatchEvent::Kind::gone;
}

}  // namespace

CollectionTree::CollectionTree(std::vector<std::string> rootCandidates,
                               std::unique_ptr<Watcher> watcher, ItemIndex& index)
    : candidates_(std::move(rootCandidates)), index_(index), watches_(std::move(watcher)) {}

CollectionTree::~CollectionTree() = default;

void CollectionTree::beginWatching() {
  checkRoot();
  if (root_ == nullptr) return;
  settle(*root_);
  for (const auto& [name, child] : root_->children) {
    if (mayHoldDirectories(child->path)) settle(*child);
  }
}

bool CollectionTree::takeNews() {
  const WatchBatch batch = watches_.watcher().drain();
  if (batch.isIncomplete) isSuspect_ = true;
  // Asked before they are acted on: an event that ends a watch takes its users away.
  const auto isCertainEvent = [this](const WatchEvent& event) { return isCertain(event); };
  if (std::any_of(batch.events.begin(), batch.events.end(), isCertainEvent)) {
    ++notices_;
    isAnnounced_ = true;
  }
  for (const WatchEvent& event : batch.events) route(event);
  return isSuspect_ || hasCandidateNews_ || (root_ != nullptr && hasWorkBelow(*root_));
}

// An answer shows it, whatever is in the file. What is only created or written to may be half of a
// change; that is seen when it is read.
bool CollectionTree::isCertain(const WatchEvent& event) const {
  using Kind = WatchEvent::Kind;
  const bool isWhole =
      event.kind == Kind::appeared || event.kind == Kind::gone || event.kind == Kind::written;
  const auto concerns = [&](const CollectionDirectory* directory) {
    if (directory == nullptr || event.name.empty()) return false;
    if (event.isDirectory) return isNewsOfNames(event.kind) && isDirectoryName(event.name);
    const NameKind kind = kindOfName(event.name);
    const bool isOurs = kind == NameKind::item || kind == NameKind::metadata;
    return directory->depth > 0 && isWhole && isOurs;
  };
  const auto& users = watches_.users(event.watch);
  return std::any_of(users.begin(), users.end(), concerns);
}

void CollectionTree::route(const WatchEvent& event) {
  const bool isEnded = event.kind == WatchEvent::Kind::watchEnded;
  for (CollectionDirectory* directory : watches_.users(event.watch)) {
    if (directory == nullptr) {
      hasCandidateNews_ = true;
    } else if (isEnded) {
      directory->watch.reset();
      directory->needsScan = true;
    } else {
      note(*directory, event);
    }
  }
  if (isEnded) watches_.end(event.watch);
}

void CollectionTree::note(CollectionDirectory& directory, const WatchEvent& event) {
  using Kind = WatchEvent::Kind;
  using FileNews = CollectionDirectory::FileNews;
  if (event.name.empty()) {
    directory.needsMetadata = true;
    return;
  }
  const NameKind kind = kindOfName(event.name);
  const bool mayBeItem = directory.depth > 0 && kind == NameKind::item;
  const bool isMetadata = directory.depth > 0 && kind == NameKind::metadata;
  if (event.isDirectory || !(mayBeItem || isMetadata)) {
    // Without a directory there may be a link to one.
    const bool mayExist = event.isDirectory || kind != NameKind::ignored;
    if (mayExist && isNewsOfNames(event.kind)) directory.changedNames.insert(event.name);
    return;
  }
  if (event.kind == Kind::modified || (event.kind == Kind::created && mayBeItem)) {
    directory.beingWritten.insert(event.name);
  } else if (event.kind != Kind::attributes && event.kind != Kind::created) {
    directory.beingWritten.erase(event.name);
  }
  if (isMetadata) {
    if (event.kind != Kind::modified) directory.needsMetadata = true;
  } else if (event.kind == Kind::attributes) {
    directory.changedFiles.emplace(event.name, FileNews::attributes);
  } else {
    directory.changedFiles.insert_or_assign(event.name, FileNews::contents);
  }
}

void CollectionTree::refresh() {
  // What was taken in before has its notices already.
  isLastRound_ = false;
  finishBatch();
  for (int round = 0; round < maximumRounds; ++round) {
    isLastRound_ = round + 1 == maximumRounds;
    if (std::exchange(isCutOffFound_, false)) {
      pollfd news{watchDescriptor(), POLLIN, 0};
      static_cast<void>(::poll(&news, 1, newsOfTruncationMilliseconds));
    }
    takeNews();
    // Of candidates, or of what is behind a link: that only the check finds out.
    const bool hasNewsOutside = hasCandidateNews_;
    checkRoot();
    if (root_ != nullptr && (round == 0 || isSuspect_ || hasNewsOutside)) check(*root_);
    isSuspect_ = false;
    if (!finishBatch()) break;
  }
  isRead_ = true;
}

// Acts on the news of one batch and counts its notice. False when there was nothing to do.
bool CollectionTree::finishBatch() {
  const bool isDone = settleAll();
  if (isChanged_ && !isAnnounced_ && isRead_) ++notices_;
  isChanged_ = false;
  isAnnounced_ = false;
  return isDone;
}

void CollectionTree::retryUnreadable() {
  for (CollectionDirectory* directory : numbered_) {
    if (directory == nullptr || !directory->hasUnreadable) continue;
    directory->hasUnreadable = false;
    directory->items->forEachFile([&](const FileRecord& file) {
      if (!file.isUnreadable) return;
      directory->changedFiles.emplace(file.name(), CollectionDirectory::FileNews::contents);
    });
  }
}

std::size_t CollectionTree::takeNotices() {
  return std::exchange(notices_, 0);
}

std::shared_ptr<const Calendars> CollectionTree::calendars() {
  if (calendars_ == nullptr) {
    std::vector<LocalCalendarRef> calendars;
    for (const CollectionDirectory* directory : numbered_) {
      if (directory != nullptr && directory->isCollection()) {
        calendars.push_back(calendarOf(*directory));
      }
    }
    calendars_ = std::make_shared<const Calendars>(std::move(calendars));
  }
  return calendars_;
}

const CollectionItems* CollectionTree::items(std::uint32_t number) const {
  const CollectionDirectory* directory = numbered_[number];
  return directory == nullptr ? nullptr : directory->items.get();
}

// The root is looked for at every query: that it came or went shows at once, watched or not.
void CollectionTree::checkRoot() {
  if (!isRootSame()) {
    const auto path = findRoot(candidates_);
    const auto identity = path ? identityOf(*path) : std::nullopt;
    if (root_ != nullptr) drop(std::move(root_));
    if (identity) {
      root_ = std::make_unique<CollectionDirectory>();
      root_->path = *path;
      root_->identity = *identity;
      root_->needsScan = true;
    }
    isChanged_ = true;
    hasCandidateNews_ = true;
  }
  if (!hasCandidateNews_) return;
  watchCandidates();
  // What came before the watch did.
  checkRoot();
}

bool CollectionTree::isRootSame() const {
  // The first candidate counts before all others: one look is enough.
  if (root_ != nullptr && root_->path == candidates_.front())
    return identityOf(root_->path) == root_->identity;
  const auto path = findRoot(candidates_);
  if (root_ == nullptr) return !path || !identityOf(*path);
  return path && *path == root_->path && identityOf(*path) == root_->identity;
}

// Watches what tells that a root comes that counts before the present one, of each path the nearest
// directory that exists, and that the present one goes with a directory above it.
void CollectionTree::watchCandidates() {
  std::vector<WatchId> watches;
  for (const std::string& candidate : candidates_) {
    if (root_ != nullptr && candidate == root_->path) {
      for (std::string above = parentOf(candidate); above != "/"; above = parentOf(above)) {
        const auto watch = watches_.watch(above, Watcher::Interest::place, nullptr);
        if (watch) watches.push_back(*watch);
      }
      break;
    }
    // One that came before the watch did was told to nobody, and the next may come in it.
    std::string watched;
    for (std::string nearest = nearestAncestor(candidate); nearest != watched;
         nearest = nearestAncestor(candidate)) {
      watched = nearest;
      const auto watch = watches_.watch(watched, Watcher::Interest::names, nullptr);
      if (watch) watches.push_back(*watch);
    }
  }
  for (const WatchId watch : candidateWatches_) watches_.release(watch, nullptr);
  candidateWatches_ = std::move(watches);
  hasCandidateNews_ = false;
}

// Marks what no watch tells about.
void CollectionTree::check(CollectionDirectory& directory) {
  for (const auto& [name, child] : directory.children) check(*child);
  if (!isSuspect_ && !directory.needsChecks()) return;
  if (isSuspect_ || !directory.watch) directory.needsScan = true;
  if (directory.identity.isLink && directory.parent != nullptr) {
    directory.parent->changedNames.insert(directory.name);
  }
  directory.changedNames.insert(directory.danglingLinks.begin(), directory.danglingLinks.end());
  for (const std::string& name : directory.unsettled) {
    directory.changedFiles.emplace(name, CollectionDirectory::FileNews::suspected);
  }
  for (const auto& [name, watch] : directory.linkedFiles) {
    const FileRecord* file = directory.items->file(name);
    struct stat status {};
    const bool isThere = ::stat((directory.path + '/' + name).c_str(), &status) == 0;
    const bool isSame =
        file == nullptr ? !isThere : isThere && tagOf(status) == file->tag && !file->isYoung;
    if (!isSame) directory.changedFiles.emplace(name, CollectionDirectory::FileNews::suspected);
  }
}

// False when there was nothing to do.
bool CollectionTree::settleAll() {
  bool isDone = false;
  while (root_ != nullptr && settleTree(*root_)) isDone = true;
  load();
  return isDone;
}

void CollectionTree::load() {
  std::vector<LoadOrder> orders;
  for (PendingLoad& load : loads_) orders.push_back(std::move(load.order));
  loads_.clear();
  if (!orders.empty()) loadFiles(orders);
}

bool CollectionTree::settleTree(CollectionDirectory& directory) {
  bool isDone = directory.hasWork();
  if (isDone) settle(directory);
  for (const auto& [name, child] : directory.children) isDone |= settleTree(*child);
  return isDone;
}

bool CollectionTree::hasWorkBelow(const CollectionDirectory& directory) {
  const auto hasWork = [](const auto& child) { return hasWorkBelow(*child.second); };
  return directory.hasWork() ||
         std::any_of(directory.children.begin(), directory.children.end(), hasWork);
}

std::uint32_t CollectionTree::takeNumber(CollectionDirectory& directory) {
  const auto free = std::find(numbered_.begin(), numbered_.end(), nullptr);
  const auto number = static_cast<std::uint32_t>(free - numbered_.begin());
  if (free == numbered_.end()) numbered_.push_back(nullptr);
  numbered_[number] = &directory;
  return number;
}

void CollectionTree::addChild(CollectionDirectory& parent, const std::string& name,
                              const DirectoryIdentity& identity) {
  auto child = std::make_unique<CollectionDirectory>();
  child->name = name;
  child->path = parent.path + '/' + name;
  child->depth = parent.depth + 1;
  child->parent = &parent;
  child->identity = identity;
  child->needsScan = true;
  child->number = takeNumber(*child);
  index_.order.name(child->number, identifierOf(*child));
  child->items = std::make_unique<CollectionItems>(child->number, index_);
  // At once: reading what stands before it can take long.
  watch(*child);
  parent.children.emplace(name, std::move(child));
  calendars_.reset();
  isChanged_ = true;
}

void CollectionTree::watch(CollectionDirectory& directory) {
  if (directory.watch) return;
  directory.watch = watches_.watch(directory.path, Watcher::Interest::contents, &directory);
}

// With everything below it.
void CollectionTree::drop(std::unique_ptr<CollectionDirectory> directory) {
  for (auto& [name, child] : directory->children) drop(std::move(child));
  if (directory->watch) watches_.release(*directory->watch, directory.get());
  for (const auto& [name, watch] : directory->linkedFiles) {
    if (watch) watches_.release(*watch, nullptr);
  }
  std::erase_if(loads_, [&](const PendingLoad& load) { return load.directory == directory.get(); });
  if (directory->depth > 0) numbered_[directory->number] = nullptr;
  calendars_.reset();
  isChanged_ = true;
}

}  // namespace tidemark::local
