// What the bridge's own changes take, and the query after each.
#include <cstdlib>
#include <fstream>

#include "bridge.h"
#include "figures.h"
#include "measuring.h"
#include "sampling.h"

namespace tidemark::bench {
namespace {

namespace fs = std::filesystem;

constexpr const char* collection = "work";
constexpr const char* seriesUid = "bench-series";
constexpr const char* seriesFile = "bench-series.ics";

// A day of the middle week.
std::string changedDay() {
  return date(7 * middleWeek + 2);
}

// A daily series through the middle week, as another program would leave it. Gone at the end.
class Series {
 public:
  explicit Series(const StoreUnderTest& store) : file_(store.root() / collection / seriesFile) {
    std::ofstream(file_)
        << "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Example//Writer//EN\r\n"
        << "BEGIN:VEVENT\r\nUID:" << seriesUid << "\r\nDTSTAMP:20250101T000000Z\r\n"
        << "DTSTART:20250101T100000Z\r\nDTEND:20250101T110000Z\r\nRRULE:FREQ=DAILY\r\n"
        << "SUMMARY:Daily\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
  }
  ~Series() {
    std::error_code ignored;
    fs::remove(file_, ignored);
  }
  Series(const Series&) = delete;
  Series& operator=(const Series&) = delete;

 private:
  fs::path file_;
};

// What each round of changes measures, with a bridge and its limits.
class Writing {
 public:
  struct Change {
    Pair durable;
    Pair weekAfter;
  };

  Writing(const Programs& programs, const StoreUnderTest& store)
      : store_(store),
        bridge_(programs, store.dataHome),
        sizedEcho_(limitProgram(programs, "sized_echo")),
        writer_(limitProgram(programs, "write_durably", {floorFolder(store)})) {
    bridge_.ask(week_);
  }

  // A new event, a change of it, a change of an occurrence of the series, and the event removed.
  void round(int number) {
    const std::string title = "Round " + std::to_string(number);
    const std::string reply =
        write(create_, R"("cmd":"create","calendarId":")" + std::string(collection) +
                           R"(","title":")" + title + R"(","start":")" + changedDay() +
                           R"(T10:00:00Z","end":")" + changedDay() + R"(T11:00:00Z")");
    const std::string identifier = identifierIn(reply);
    const fs::path file =
        store_.root() / collection / (identifier.substr(identifier.find(':') + 1) + ".ics");
    addLimits(create_, '+' + std::to_string(fs::file_size(file)), title, true);

    write(update_,
          R"("cmd":"update","eventId":")" + identifier + R"(","title":"Changed )" + title + R"(")");
    addLimits(update_, std::to_string(fs::file_size(file)), "Changed " + title, true);

    write(occurrence_, R"("cmd":"update","eventId":")" + std::string(collection) + ':' + seriesUid +
                           R"(","occurrence":")" + changedDay() + R"(T10:00:00Z","title":"Moved )" +
                           title + R"(")");
    addLimits(occurrence_, std::to_string(fs::file_size(store_.root() / collection / seriesFile)),
              "Moved " + title, true);

    write(remove_, R"("cmd":"delete","eventId":")" + identifier + R"(")");
    addLimits(remove_, "0", "Changed " + title, false);
  }

  std::vector<Figure> figures() const {
    std::vector<Figure> figures;
    const auto add = [&](const char* name, const Pair& pair, double target) {
      figures.push_back(figure(name, store_, pair.measured.median(), pair.limit.median(), target));
    };
    add("create", create_.durable, 1.3);
    add("update", update_.durable, 1.3);
    add("update of one occurrence", occurrence_.durable, 1.3);
    add("delete", remove_.durable, 1.35);
    add("week right after a create", create_.weekAfter, 3);
    add("week right after an update", update_.weekAfter, 3);
    add("week right after one occurrence's update", occurrence_.weekAfter, 3);
    add("week right after a delete", remove_.weekAfter, 3);
    figures.push_back({"stale answers after changes", store_.label, Unit::count,
                       static_cast<double>(stale_), 0, 0});
    return figures;
  }

 private:
  static std::string floorFolder(const StoreUnderTest& store) {
    const fs::path folder = store.dataHome / "floor";
    fs::create_directories(folder);
    fs::remove(folder / ".item.tmp");
    return folder.string();
  }

  // Of the record in the reply to a create.
  static std::string identifierIn(const std::string& reply) {
    constexpr std::string_view key = R"("id":")";
    const std::size_t begin = reply.find(key);
    if (begin == reply.npos) giveUp("a change failed: " + reply);
    return reply.substr(begin + key.size(),
                        reply.find('"', begin + key.size()) - begin - key.size());
  }

  std::string write(Change& change, const std::string& members) {
    const std::string request = R"({"id":1,)" + members + "}";
    std::string_view reply;
    change.durable.measured.add(timed([&] { reply = bridge_.ask(request); }));
    if (reply.find(R"("error")") != reply.npos) giveUp("a change failed: " + std::string(reply));
    return std::string(reply);
  }

  // The same on disk is write_durably's `write`. `title` is in the week's answer after the change,
  // or is not.
  void addLimits(Change& change, const std::string& write, const std::string& title, bool isShown) {
    std::string_view answer;
    change.weekAfter.measured.add(timed([&] { answer = bridge_.ask(week_); }));
    stale_ += (answer.find('"' + title + '"') != answer.npos) != isShown;
    change.weekAfter.limit.add(echoOf(sizedEcho_, answer.size()));
    writer_.send(write);
    constexpr double nanoseconds = 1e-9;
    change.durable.limit.add(std::strtod(std::string(writer_.receive()).c_str(), nullptr) *
                             nanoseconds);
  }

  const StoreUnderTest& store_;
  const std::string week_ = weekRequest(middleWeek);
  Bridge bridge_;
  Process sizedEcho_;
  Process writer_;
  Change create_, update_, occurrence_, remove_;
  int stale_ = 0;
};

}  // namespace

std::vector<Figure> measureWriting(const Programs& programs, const StoreUnderTest& store) {
  constexpr int rounds = 200;
  const OneProcessor pinned;
  const Series series(store);
  Writing writing(programs, store);
  for (int number = 0; number < rounds; ++number) writing.round(number);
  return writing.figures();
}

}  // namespace tidemark::bench
