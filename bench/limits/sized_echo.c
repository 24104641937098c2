// Answers a line that holds a number N with a line of N bytes: what an answer of that size costs
// when it is there already.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { maximumSize = 1 << 28 };

int main(void) {
  char* answer = NULL;
  size_t capacity = 0;
  char request[64];
  for (;;) {
    ssize_t got = read(STDIN_FILENO, request, sizeof request - 1);
    if (got <= 0) return 0;
    request[got] = '\0';
    size_t size = strtoull(request, NULL, 10);
    if (size < 1 || size > maximumSize) return 1;
    if (size > capacity) {
      answer = realloc(answer, size);
      if (!answer) return 1;
      memset(answer, 'x', size);
      capacity = size;
    }
    answer[size - 1] = '\n';
    for (size_t sent = 0; sent < size;) {
      ssize_t written = write(STDOUT_FILENO, answer + sent, size - sent);
      if (written <= 0) return 1;
      sent += (size_t)written;
    }
    answer[size - 1] = 'x';
  }
}
