#include "host/json_writer.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace tidemark {
namespace {

// The longest a character gets: \u00xx.
constexpr std::size_t longestEscape = 6;

// Text is written in pieces of this size, so that room for the worst case is bounded and made once
// a piece.
constexpr std::size_t pieceSize = 4096;

constexpr bool isPlain(unsigned char byte) {
  return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\' && byte != '/';
}

// The same of eight bytes at once, whichever comes first in memory.
bool isPlain(std::uint64_t bytes) {
  constexpr std::uint64_t ones = 0x0101010101010101;
  constexpr std::uint64_t highBits = 0x8080808080808080;
  // Subtracting borrows into the high bit of a byte that is less; a borrow into the next byte only
  // ever follows one, so that the answer for the whole is right.
  const auto below = [](std::uint64_t word, std::uint64_t limit) { return word - ones * limit; };
  const auto holds = [&](unsigned char byte) { return below(bytes ^ (ones * byte), 1); };
  return ((bytes | below(bytes, 0x20) | holds('"') | holds('\\') | holds('/')) & highBits) == 0;
}

std::uint64_t eightBytes(const char* at) {
  std::uint64_t bytes;
  std::memcpy(&bytes, at, sizeof bytes);
  return bytes;
}

// True when the text can be written as it is. Most can.
bool isPlain(std::string_view text) {
  constexpr std::size_t step = sizeof(std::uint64_t);
  if (text.size() < step) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return isPlain(static_cast<unsigned char>(c)); });
  }
  const char* const last = text.data() + text.size() - step;
  for (const char* at = text.data(); at < last; at += step) {
    if (!isPlain(eightBytes(at))) return false;
  }
  return isPlain(eightBytes(last));
}

// RFC 8259, section 7, and the slash, as the platform's own writer does it.
char* writeEscape(unsigned char byte, char* out) {
  constexpr std::string_view hexDigits = "0123456789abcdef";
  *out++ = '\\';
  switch (byte) {
    case '\b':
      *out++ = 'b';
      return out;
    case '\f':
      *out++ = 'f';
      return out;
    case '\n':
      *out++ = 'n';
      return out;
    case '\r':
      *out++ = 'r';
      return out;
    case '\t':
      *out++ = 't';
      return out;
    case '"':
    case '\\':
    case '/':
      *out++ = static_cast<char>(byte);
      return out;
    default:
      *out++ = 'u';
      *out++ = '0';
      *out++ = '0';
      *out++ = hexDigits[byte >> 4];
      *out++ = hexDigits[byte & 0xF];
      return out;
  }
}

}  // namespace

void JsonWriter::value(std::string_view text) {
  if (isPlain(text)) {
    plainValue(text);
  } else {
    escapedValue(text);
  }
}

void JsonWriter::escapedValue(std::string_view text) {
  char* begin = beginToken(1);
  *begin++ = '"';
  out_.setEnd(begin);
  const char* in = text.data();
  const char* const inEnd = in + text.size();
  while (in != inEnd) {
    const char* const pieceEnd = in + std::min(pieceSize, static_cast<std::size_t>(inEnd - in));
    char* out = out_.reserve(longestEscape * pieceSize);
    while (in < pieceEnd) {
      while (pieceEnd - in >= 8 && isPlain(eightBytes(in))) {
        std::memcpy(out, in, 8);
        in += 8;
        out += 8;
      }
      while (in < pieceEnd && isPlain(static_cast<unsigned char>(*in))) *out++ = *in++;
      if (in >= pieceEnd) break;
      const auto byte = static_cast<unsigned char>(*in);
      if (byte < 0x80) {
        out = writeEscape(byte, out);
        ++in;
        continue;
      }
      utf8proc_int32_t character;
      const utf8proc_ssize_t length =
          utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(in), inEnd - in, &character);
      if (length <= 0) {
        valid_ = false;
        return;
      }
      std::memcpy(out, in, static_cast<std::size_t>(length));
      in += length;
      out += length;
    }
    out_.setEnd(out);
  }
  out_.append('"');
  needsComma_ = true;
}

void JsonWriter::plainValue(std::string_view text) {
  char* end = beginToken(text.size() + 2);
  *end++ = '"';
  end = std::copy_n(text.data(), text.size(), end);  // an empty text may have no data at all
  *end++ = '"';
  out_.setEnd(end);
  needsComma_ = true;
}

void JsonWriter::value(std::int64_t number) {
  constexpr std::size_t room = 20;  // the sign and nineteen digits
  char* begin = beginToken(room);
  out_.setEnd(std::to_chars(begin, begin + room, number).ptr);
  needsComma_ = true;
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
      needsComma_ = false;
      value(element);
    }
    endObject();
  }
}

}  // namespace tidemark
