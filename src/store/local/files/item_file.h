// Files of a collection, written so that nobody ever sees half of one: a temporary file in the same
// directory, synced, put in place by one rename, the directory synced.
//
// Called by one thread of the process at a time; other processes may write the same files at the
// same time. Bridges exclude each other by a lock on the directory; another program's rename that
// comes between is seen, and the change is made again on what that program wrote, so no rename into
// place is ever lost. A file keeps its name, mode and owner; a write goes through a symbolic link
// to the file behind it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "store/types.h"

namespace tidemark::local {

// What a change makes of a file's text: the new text, or an empty optional to remove the file. A
// refusal carries the sentence for the host; the file then stays as it is. It may be asked more
// than once, and may create files meanwhile, but not rewrite any: it runs under the lock.
struct Rewrite {
  std::optional<std::string> text;
  std::optional<std::string> refusal;
};
using RewriteText = std::function<Rewrite(std::string_view current)>;

// Makes `directory`/`name` with that text, readable by its owner alone; fails when there is such a
// file already. On failure nothing is left behind.
StoreResult createItemFile(const std::string& directory, const std::string& name,
                           std::string_view text);

// Reads the file, lets `rewrite` say what becomes of it, and puts that in place; again from the
// start when the file was replaced meanwhile, for some seconds at most. On failure the file is what
// it was. Failures of the system are answered with its own text. A text that stays the same is not
// written. A removal through a symbolic link takes the file behind it and the link.
StoreResult rewriteItemFile(const std::string& directory, const std::string& name,
                            const RewriteText& rewrite);

}  // namespace tidemark::local
