#include "host/json_writer.h"

#include <utf8proc.h>

#include <bit>
#include <charconv>
#include <limits>

namespace tidemark {
namespace {

// What an ASCII character that cannot be written as it is has after its backslash (RFC 8259,
// section 7): a letter, itself, or u and its number. Zero for the others. The slash is the
// platform's own writer's way.
constexpr auto escapes = [] {
  std::array<char, 128> letters{};
  std::fill_n(letters.begin(), 0x20, 'u');
  letters['\b'] = 'b';
  letters['\f'] = 'f';
  letters['\n'] = 'n';
  letters['\r'] = 'r';
  letters['\t'] = 't';
  letters['"'] = '"';
  letters['\\'] = '\\';
  letters['/'] = '/';
  return letters;
}();

bool isAscii(char c) {
  return static_cast<unsigned char>(c) < escapes.size();
}

bool isPlain(char c) {
  return isAscii(c) && escapes[static_cast<unsigned char>(c)] == 0;
}

char* writeEscape(char c, char* out) {
  constexpr std::string_view hexDigits = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  *out++ = '\\';
  *out++ = escapes[byte];
  if (escapes[byte] != 'u') return out;
  *out++ = '0';
  *out++ = '0';
  *out++ = hexDigits[byte >> 4];
  *out++ = hexDigits[byte & 0xF];
  return out;
}

// Sixteen bytes side by side, in the vectors that compilers have for every processor, and the same
// as two words.
using Bytes = signed char __attribute__((vector_size(16)));
using Words = std::uint64_t __attribute__((vector_size(16)));

// Ones in each byte that is not plain. What is not ASCII is negative.
Words marksOf(Words words) {
  const auto bytes = reinterpret_cast<Bytes>(words);
  return reinterpret_cast<Words>((bytes < 0x20) | (bytes == '"') | (bytes == '\\') |
                                 (bytes == '/'));
}

// How many bytes of the word stand before the first mark, which there is.
template <typename Word>
std::size_t lengthBeforeMark(Word marks) {
  const int bits = std::endian::native == std::endian::little ? std::countr_zero(marks)
                                                              : std::countl_zero(marks);
  return static_cast<std::size_t>(bits) / 8;
}

// copyPlain for a text of one to two words, which are copied over each other.
template <typename Word>
std::size_t copyPlainWords(const char* in, std::size_t size, char* out) {
  const std::size_t second = size - sizeof(Word);
  Word words[2];
  std::memcpy(&words[0], in, sizeof(Word));
  std::memcpy(&words[1], in + second, sizeof(Word));
  std::memcpy(out, &words[0], sizeof(Word));
  std::memcpy(out + second, &words[1], sizeof(Word));
  const Words marks = marksOf(Words{words[0], words[1]});
  if (const auto first = static_cast<Word>(marks[0])) return lengthBeforeMark(first);
  if (const auto last = static_cast<Word>(marks[1])) return second + lengthBeforeMark(last);
  return size;
}

// Copies the bytes before the first that is not plain, and returns how many they are. What is
// written after them, up to `size`, means nothing.
std::size_t copyPlain(const char* in, std::size_t size, char* out) {
  constexpr std::size_t step = sizeof(Words);
  std::size_t done = 0;
  if (size < step) {
    if (size >= 8) return copyPlainWords<std::uint64_t>(in, size, out);
    if (size >= 4) return copyPlainWords<std::uint32_t>(in, size, out);
    for (; done < size && isPlain(in[done]); ++done) out[done] = in[done];
    return done;
  }
  while (true) {
    Words words;
    std::memcpy(&words, in + done, step);
    std::memcpy(out + done, &words, step);
    const Words marks = marksOf(words);
    if ((marks[0] | marks[1]) != 0) {
      return done + (marks[0] != 0 ? lengthBeforeMark<std::uint64_t>(marks[0])
                                   : 8 + lengthBeforeMark<std::uint64_t>(marks[1]));
    }
    done += step;
    if (done == size) return done;
    // The last sixteen bytes once more, rather than the rest by other means.
    done = std::min(done, size - step);
  }
}

// The length of the character at the front of the text; 0 when it is not UTF-8.
std::size_t lengthOfCharacter(std::string_view text) {
  utf8proc_int32_t character;
  const utf8proc_ssize_t length =
      utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                       static_cast<utf8proc_ssize_t>(text.size()), &character);
  return length <= 0 ? 0 : static_cast<std::size_t>(length);
}

}  // namespace

char* JsonWriter::writeText(std::string_view text, char* out) {
  *out++ = '"';
  while (true) {
    const std::size_t size = std::min(text.size(), pieceSize);
    std::size_t done = 0;
    while (true) {
      const std::size_t length = copyPlain(text.data() + done, size - done, out);
      done += length;
      out += length;
      if (done >= size) break;
      if (isAscii(text[done])) {
        out = writeEscape(text[done++], out);
        continue;
      }
      // It may reach beyond the piece, by less than there is room for.
      const std::size_t bytes = lengthOfCharacter(text.substr(done));
      if (bytes == 0) {
        valid_ = false;
        return out;
      }
      out = std::copy_n(text.data() + done, bytes, out);
      done += bytes;
    }
    text.remove_prefix(done);
    if (text.empty()) break;
    out_.setEnd(out);
    out = out_.reserve(roomForText(text));
  }
  *out++ = '"';
  return out;
}

void JsonWriter::value(std::int64_t number) {
  constexpr std::size_t room = 20;  // the sign and nineteen digits
  char* begin = beginToken(room);
  endToken(std::to_chars(begin, begin + room, number).ptr);
}

// Recursion is bounded by the nesting that parseJson accepts.
void JsonWriter::value(const Json& json) {
  if (json.isNull()) {
    literal("null");
  } else if (const bool* flag = json.boolean()) {
    value(*flag);
  } else if (const JsonNumber* number = json.number()) {
    literal(number->text);
  } else if (const std::string* text = json.string()) {
    value(std::string_view(*text));
  } else if (const JsonArray* array = json.array()) {
    beginArray();
    for (const Json& element : *array) value(element);
    endArray();
  } else {
    beginObject();
    for (const auto& [name, element] : json.object()->members) {
      value(std::string_view(name));
      out_.append(':');
      commaSize_ = 0;
      value(element);
    }
    endObject();
  }
}

}  // namespace tidemark
