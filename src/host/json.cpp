#include "host/json.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "rapidjson/memorystream.h"
#include "rapidjson/reader.h"

namespace tidemark {
namespace {

// UTF-8 has no surrogates (RFC 3629, section 3), but the reader lets a lone low one through when it
// stands as an escape. All of them, and nothing else that is left, have these first two bytes.
bool holdsSurrogate(std::string_view text) {
  for (std::size_t at = text.find('\xED'); at != std::string_view::npos;
       at = text.find('\xED', at + 1)) {
    if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) >= 0xA0) return true;
  }
  return false;
}

bool fitsDouble(const std::string& number) {
  constexpr auto safeDigits = static_cast<std::size_t>(std::numeric_limits<double>::max_exponent10);
  if (number.size() <= safeDigits && number.find_first_of("eE") == std::string::npos) return true;
  return std::isfinite(std::strtod(number.c_str(), nullptr));
}

// Takes the reader's events and builds the value. A container that is open is the last element of
// its parent, so it stays where it is until it is closed.
class Builder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Builder> {
 public:
  bool Null() { return add(nullptr) != nullptr; }
  bool Bool(bool flag) { return add(flag) != nullptr; }
  bool RawNumber(const char* text, rapidjson::SizeType size, bool) {
    JsonNumber number{std::string(text, size)};
    return fitsDouble(number.text) && add(std::move(number)) != nullptr;
  }
  bool String(const char* text, rapidjson::SizeType size, bool) {
    return !holdsSurrogate({text, size}) && add(std::string(text, size)) != nullptr;
  }
  bool Key(const char* text, rapidjson::SizeType size, bool) {
    if (holdsSurrogate({text, size})) return false;
    std::get<JsonObject>(open_.back()->value).members.emplace_back(std::string(text, size), Json());
    return true;
  }
  bool StartObject() {
    // At once for all members that most requests have.
    JsonObject object;
    object.members.reserve(8);
    return enter(std::move(object));
  }
  bool EndObject(rapidjson::SizeType) { return leave(); }
  bool StartArray() { return enter(JsonArray()); }
  bool EndArray(rapidjson::SizeType) { return leave(); }

  Json result;

 private:
  Json* add(Json::Value value) {
    Json* place = &result;
    if (!open_.empty()) {
      Json& parent = *open_.back();
      if (auto* array = std::get_if<JsonArray>(&parent.value)) {
        place = &array->emplace_back();
      } else {
        place = &std::get<JsonObject>(parent.value).members.back().second;
      }
    }
    place->value = std::move(value);
    return place;
  }
  bool enter(Json::Value container) {
    if (open_.size() == maximumJsonNesting) return false;
    open_.push_back(add(std::move(container)));
    return true;
  }
  bool leave() {
    open_.pop_back();
    return true;
  }

  std::vector<Json*> open_;
};

}  // namespace

const Json* JsonObject::find(std::string_view key) const {
  for (auto member = members.rbegin(); member != members.rend(); ++member) {
    if (member->first == key) return &member->second;
  }
  return nullptr;
}

std::optional<Json> parseJson(std::string_view text) {
  // The reader takes a zero byte for the end of the text, and counts in 32 bits.
  if (text.find('\0') != std::string_view::npos) return std::nullopt;
  if (text.size() > std::numeric_limits<rapidjson::SizeType>::max()) return std::nullopt;

  constexpr unsigned flags = rapidjson::kParseIterativeFlag |
                             rapidjson::kParseValidateEncodingFlag |
                             rapidjson::kParseNumbersAsStringsFlag;
  rapidjson::MemoryStream stream(text.data(), text.size());
  rapidjson::Reader reader;
  Builder builder;
  if (reader.Parse<flags>(stream, builder).IsError()) return std::nullopt;
  return std::move(builder.result);
}

}  // namespace tidemark
