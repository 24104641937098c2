// How a change of a file stays safe against crashes and against other programs.
//
// A new text is written to a temporary file and synced. Then the two files trade names at one
// instant, and what came out is looked at: if it is what was read, byte for byte, the change was
// made on the right text. If not, somebody replaced the file in the meantime: the names are traded
// back, and the change is made again on that one. A removal likewise moves the file aside and looks
// before it lets go. Without such an exchange in the file system all that is left is to look just
// before the rename.
//
// The directory is synced while the old file still exists under the temporary name, so that a
// failure can be undone.
//
// What remains: a process that is killed leaves its temporary file behind, which nobody reads.
//
// Another program's rename that falls between our last look and our exchange, two system calls, is
// out of its place until the next few calls put it back. Who reads the file in that time sees our
// text, and a kill in that time leaves the other one's text under the temporary name.
//
// A program that writes into the file where it is, instead of renaming, is noticed by what it wrote
// before our exchange. What it writes later, through a descriptor that it kept, goes to the file
// that was replaced, as with any rename.
#include "store/local/files/item_file.h"

#include <chrono>
#include <system_error>

#include "store/local/files/current_file.h"
#include "store/local/files/open_directory.h"
#include "store/local/files/temporary_file.h"

namespace tidemark::local {
namespace {

// A file that another program replaces again and again is given up after this time. One change
// takes well below a millisecond, so only a program that does nothing else keeps us busy for so
// long.
constexpr std::chrono::seconds patience{5};

// Empty when another program was faster: the change has to be made again on what is there now.
using Attempt = std::optional<StoreResult>;
constexpr std::nullopt_t overtaken = std::nullopt;

StoreResult systemFailure(ErrorNumber error) {
  return StoreResult::failure(std::error_code(error, std::generic_category()).message());
}

bool isAt(const OpenDirectory& directory, const std::string& name, const FileIdentity& identity) {
  const std::optional<FileStatus> status = directory.status(name);
  return status && identityOf(*status) == identity;
}

// Under `aside` is a file that is not ours, and `ours` took its place under `name`: puts it back,
// so that `aside` is free to go. Whoever replaces ours in the meantime is the newest and wins,
// until nobody interferes any more. Returns whether that succeeded; if not, `aside` may be the only
// name of somebody's text.
bool exchangeBack(OpenDirectory& directory, const std::string& aside, const std::string& name,
                  FileIdentity ours) {
  FileIdentity inPlace = ours;
  Descriptor inPlaceHold;  // keeps the number from being used for a new file
  while (true) {
    Descriptor asideHold = directory.hold(aside);
    const std::optional<FileStatus> goingBack = directory.status(aside);
    const ErrorNumber error = directory.exchange(aside, name);
    // Who removed the file that stood there meant the item. It stays removed.
    if (error == ENOENT) return true;
    if (error != 0) return directory.rename(aside, name) == 0;

    const std::optional<FileStatus> cameOut = directory.status(aside);
    if (!goingBack || !cameOut) return false;
    if (identityOf(*cameOut) == inPlace) return true;
    inPlace = identityOf(*goingBack);
    inPlaceHold = std::move(asideHold);
  }
}

// The same for a removal, where nothing took the file's place.
ErrorNumber moveBack(OpenDirectory& directory, const std::string& aside, const std::string& name) {
  ErrorNumber error = directory.renameIfAbsent(aside, name);
  // Somebody's text is worth a second try.
  if (error != 0 && error != EEXIST) error = directory.renameIfAbsent(aside, name);
  // A newer file took the place, as it would have replaced this one.
  return error == EEXIST ? directory.remove(aside) : error;
}

// For file systems that cannot exchange: look, then rename. The old file is gone by the time the
// directory is synced, so that what undoes a failure there is a new file with the old text.
Attempt replaceUnexchanged(CurrentFile& file, TemporaryFile& temporary) {
  OpenDirectory& directory = file.directory();
  if (!file.isUntouched() || !file.isAside(file.name())) return overtaken;
  if (const ErrorNumber error = directory.rename(temporary.name(), file.name())) {
    return systemFailure(error);
  }
  temporary.release();
  const ErrorNumber error = directory.sync();
  if (error == 0) return StoreResult::success();

  TemporaryFile old(directory);
  const bool isRestored = old.write(file.text(), &file.status()) == 0 &&
                          isAt(directory, file.name(), temporary.identity()) &&
                          directory.rename(old.name(), file.name()) == 0;
  if (isRestored) old.release();
  return systemFailure(error);
}

Attempt replace(CurrentFile& file, std::string_view text) {
  OpenDirectory& directory = file.directory();
  TemporaryFile temporary(directory);
  if (const ErrorNumber error = temporary.write(text, &file.status())) return systemFailure(error);
  if (!file.isUntouched()) return overtaken;

  ErrorNumber error = directory.exchange(temporary.name(), file.name());
  if (error == ENOENT) return overtaken;
  if (isUnsupported(error)) return replaceUnexchanged(file, temporary);
  if (error != 0) return systemFailure(error);

  const auto undo = [&] {
    if (!exchangeBack(directory, temporary.name(), file.name(), temporary.identity())) {
      temporary.release();
    }
  };
  if (!file.isAside(temporary.name()) || !file.leadsTo(temporary.identity())) {
    undo();
    return overtaken;
  }
  error = directory.sync();
  if (error == 0) return StoreResult::success();
  undo();
  return systemFailure(error);
}

Attempt remove(CurrentFile& file) {
  OpenDirectory& directory = file.directory();
  if (!file.isUntouched()) return overtaken;

  const std::string aside = temporaryName();
  ErrorNumber error = directory.rename(file.name(), aside);
  if (error == ENOENT) return overtaken;
  if (error != 0) return systemFailure(error);

  if (!file.isAside(aside)) {
    error = moveBack(directory, aside, file.name());
    if (error != 0) return systemFailure(error);
    return overtaken;
  }
  error = directory.sync();
  if (error != 0) {
    // Should this fail too, the item's text is still there to be found, under the temporary name.
    (void)moveBack(directory, aside, file.name());
    return systemFailure(error);
  }
  // Nobody reads it there; a failure to remove it changes nothing.
  (void)directory.remove(aside);
  file.removeDanglingLink();
  return StoreResult::success();
}

Attempt rewriteOnce(const std::string& directory, const std::string& name,
                    const RewriteText& rewrite) {
  CurrentFile file(directory, name);
  if (file.error() != 0) return systemFailure(file.error());
  Rewrite wanted = rewrite(file.text());
  if (wanted.refusal) return StoreResult::failure(*std::move(wanted.refusal));
  if (!wanted.text) return remove(file);
  if (*wanted.text == file.text()) return StoreResult::success();
  return replace(file, *wanted.text);
}

}  // namespace

StoreResult createItemFile(const std::string& directory, const std::string& name,
                           std::string_view text) {
  OpenDirectory folder(directory);
  if (folder.error() != 0) return systemFailure(folder.error());
  TemporaryFile temporary(folder);
  if (const ErrorNumber error = temporary.write(text)) return systemFailure(error);
  if (const ErrorNumber error = folder.renameIfAbsent(temporary.name(), name)) {
    return systemFailure(error);
  }
  temporary.release();
  const ErrorNumber error = folder.sync();
  if (error == 0) return StoreResult::success();

  if (isAt(folder, name, temporary.identity())) (void)folder.remove(name);
  return systemFailure(error);
}

StoreResult rewriteItemFile(const std::string& directory, const std::string& name,
                            const RewriteText& rewrite) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  do {
    if (Attempt attempt = rewriteOnce(directory, name, rewrite)) return *std::move(attempt);
  } while (std::chrono::steady_clock::now() < deadline);
  return StoreResult::failure("The file is being changed by another program all the time.");
}

}  // namespace tidemark::local
