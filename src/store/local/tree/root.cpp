#include "store/local/tree/root.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "store/local/files/descriptor.h"

namespace tidemark::local {
namespace {

constexpr mode_t privateDirectory = 0700;

std::string homeDirectory() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return home;
  passwd entry{};
  passwd* found = nullptr;
  std::array<char, 4096> buffer{};
  ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
  return found != nullptr ? found->pw_dir : "/";
}

std::string dataHome(const std::string& home) {
  const char* configured = std::getenv("XDG_DATA_HOME");
  if (configured != nullptr && configured[0] == '/') return configured;
  return home + "/.local/share";
}

// What is meant by a root that exists: a name behind which there is something, readable or not.
bool saysAbsent(int error) {
  return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
}

bool exists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 || !saysAbsent(errno);
}

std::error_code outcomeOf(bool isDone) {
  return isDone ? std::error_code() : std::error_code(errno, std::generic_category());
}

std::error_code syncDirectory(const std::string& path) {
  const Descriptor directory(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return outcomeOf(directory && ::fsync(directory.get()) == 0);
}

std::error_code makeFile(const std::string& path, std::string_view text) {
  const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  const auto size = static_cast<ssize_t>(text.size());
  return outcomeOf(file && ::write(file.get(), text.data(), text.size()) == size &&
                   ::fsync(file.get()) == 0);
}

std::error_code makeCollection(const std::string& path, std::string_view title,
                               std::string_view component) {
  if (const auto error = outcomeOf(::mkdir(path.c_str(), privateDirectory) == 0)) return error;
  if (const auto error = makeFile(path + "/displayname", title)) return error;
  if (const auto error = makeFile(path + "/supported-calendar-component-set", component)) {
    return error;
  }
  return syncDirectory(path);
}

// With the parents that are missing, each durable before what is in it.
std::error_code makeParents(const std::string& path) {
  if (path.empty() || exists(path)) return {};
  const std::string parent = path.substr(0, path.find_last_of('/'));
  if (const auto error = makeParents(parent)) return error;
  const bool isThere = ::mkdir(path.c_str(), privateDirectory) == 0 || errno == EEXIST;
  if (const auto error = outcomeOf(isThere)) return error;
  return syncDirectory(parent.empty() ? "/" : parent);
}

std::error_code fillRoot(const std::string& path) {
  if (const auto error = makeCollection(path + "/calendar", "Calendar\n", "VEVENT\n")) {
    return error;
  }
  if (const auto error = makeCollection(path + "/reminders", "Reminders\n", "VTODO\n")) {
    return error;
  }
  return syncDirectory(path);
}

std::error_code makeRootAt(const std::string& root) {
  const std::string parent = root.substr(0, root.find_last_of('/'));
  if (const auto error = makeParents(parent)) return error;
  std::string temporary = parent + "/.calendars.XXXXXX";
  if (const auto error = outcomeOf(::mkdtemp(temporary.data()) != nullptr)) return error;
  std::error_code error = fillRoot(temporary);
  // A directory takes the place of an empty one at most, so nobody's calendars are lost.
  if (!error) error = outcomeOf(::rename(temporary.c_str(), root.c_str()) == 0);
  if (!error) return syncDirectory(parent);
  std::error_code ignored;
  std::filesystem::remove_all(temporary, ignored);
  const bool isMadeByOther =
      error == std::errc::file_exists || error == std::errc::directory_not_empty;
  return isMadeByOther ? std::error_code() : error;
}

// Of what there is at the path.
AuthorizationStatus statusOf(const std::string& path, mode_t mode) {
  if (!S_ISDIR(mode)) return restricted;
  // For somebody at least, which makes the bits mean something for the superuser too.
  constexpr mode_t listed = S_IRUSR | S_IRGRP | S_IROTH;
  constexpr mode_t searched = S_IXUSR | S_IXGRP | S_IXOTH;
  if ((mode & listed) == 0 || (mode & searched) == 0) return denied;
  const bool mayUse = ::faccessat(AT_FDCWD, path.c_str(), R_OK | X_OK, AT_EACCESS) == 0;
  return mayUse ? fullAccess : denied;
}

}  // namespace

std::vector<std::string> rootCandidates() {
  const std::string home = homeDirectory();
  return {dataHome(home) + "/calendars", home + "/.calendars", home + "/calendars"};
}

std::optional<std::string> findRoot(const std::vector<std::string>& candidates) {
  for (const std::string& candidate : candidates) {
    if (exists(candidate)) return candidate;
  }
  return std::nullopt;
}

AuthorizationStatus rootStatus(const std::vector<std::string>& candidates) {
  for (const std::string& candidate : candidates) {
    struct stat status {};
    if (::stat(candidate.c_str(), &status) == 0) return statusOf(candidate, status.st_mode);
    if (!saysAbsent(errno)) return denied;
  }
  return notDetermined;
}

std::optional<std::string> makeRoot(const std::vector<std::string>& candidates) {
  const std::error_code error = makeRootAt(candidates.front());
  return error ? std::optional(error.message()) : std::nullopt;
}

}  // namespace tidemark::local
