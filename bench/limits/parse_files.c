// parse_files ROOT: as read_files with one thread, but each file goes through libical's parser.
// What users of that library pay before the first query.
#include <dirent.h>
#include <libical/ical.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static size_t parsed;

static void parseFile(const char* path) {
  FILE* file = fopen(path, "rb");
  if (!file) return;
  fseek(file, 0, SEEK_END);
  long size = ftell(file);
  rewind(file);
  char* text = size < 0 ? NULL : malloc((size_t)size + 1);
  if (text) {
    text[fread(text, 1, (size_t)size, file)] = '\0';
    icalcomponent* component = icalparser_parse_string(text);
    if (component) {
      parsed++;
      icalcomponent_free(component);
    }
    free(text);
  }
  fclose(file);
}

static void parseFolder(const char* folder, int levels) {
  DIR* directory = opendir(folder);
  if (!directory) return;
  for (struct dirent* entry; (entry = readdir(directory));) {
    if (entry->d_name[0] == '.') continue;
    char path[PATH_MAX];
    snprintf(path, sizeof path, "%s/%s", folder, entry->d_name);
    size_t length = strlen(entry->d_name);
    if (entry->d_type == DT_DIR && levels > 0) {
      parseFolder(path, levels - 1);
    } else if (length > 4 && !strcmp(entry->d_name + length - 4, ".ics")) {
      parseFile(path);
    }
  }
  closedir(directory);
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  parseFolder(argv[1], 2);
  printf("%zu\n", parsed);
  return 0;
}
