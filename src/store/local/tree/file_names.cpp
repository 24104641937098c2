#include "store/local/tree/file_names.h"

namespace tidemark::local {
namespace {

bool isLitter(std::string_view name) {
  return name.ends_with(".tmp") || name.ends_with('~') ||
         (name.starts_with('#') && name.ends_with('#')) ||
         name.find(".sync-conflict-") != std::string_view::npos;
}

}  // namespace

NameKind kindOfName(std::string_view name) {
  if (!isDirectoryName(name) || isLitter(name)) return NameKind::ignored;
  if (name.ends_with(".ics")) return NameKind::item;
  if (name == "displayname" || name == "color" || name == "order" ||
      name == "supported-calendar-component-set") {
    return NameKind::metadata;
  }
  return NameKind::other;
}

bool isDirectoryName(std::string_view name) {
  return !name.empty() && !name.starts_with('.');
}

}  // namespace tidemark::local
