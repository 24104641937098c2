#include "store/local/text/content_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tidemark::local {
namespace {

struct Line {
  std::string name, parameters, value;
  std::size_t begin, end;
  friend bool operator==(const Line&, const Line&) = default;
};

std::vector<Line> scan(std::string_view text) {
  std::vector<Line> lines;
  ContentLineScanner scanner(text);
  while (const auto line = scanner.next()) {
    lines.push_back({std::string(line->name), std::string(line->parameters),
                     std::string(line->value), line->begin, line->end});
  }
  return lines;
}

Line onlyLine(std::string_view text) {
  const std::vector<Line> lines = scan(text);
  EXPECT_EQ(lines.size(), 1u) << text;
  return lines.empty() ? Line{} : lines.front();
}

TEST(ContentLine, SplitsNameParametersAndValue) {
  EXPECT_EQ(onlyLine("DTSTART;TZID=Europe/Berlin;X-A=b:20250101T100000\r\n"),
            (Line{"DTSTART", ";TZID=Europe/Berlin;X-A=b", "20250101T100000", 0, 50}));
}

TEST(ContentLine, TellsWhereEachLineStands) {
  const std::string text = "A:1\r\nB:2\n\r\nC:3";
  EXPECT_EQ(scan(text), (std::vector<Line>{
                            {"A", "", "1", 0, 5}, {"B", "", "2", 5, 9}, {"C", "", "3", 11, 14}}));
}

TEST(ContentLine, PassesOverAByteOrderMark) {
  EXPECT_EQ(onlyLine("\xEF\xBB\xBF"
                     "BEGIN:VCALENDAR\n")
                .name,
            "BEGIN");
}

TEST(ContentLine, JoinsFoldedLinesInsideACharacter) {
  EXPECT_EQ(onlyLine("SUMMARY:caf\xC3\r\n \xA9\r\n\tnoir\r\n"),
            (Line{"SUMMARY", "", "caf\xC3\xA9noir", 0, 25}));
}

TEST(ContentLine, JoinsFoldsInNameAndParameters) {
  EXPECT_EQ(onlyLine("SUM\n MARY;LANG\n UAGE=de\n :Text"),
            (Line{"SUMMARY", ";LANGUAGE=de", "Text", 0, 30}));
}

TEST(ContentLine, KeepsEarlierFoldedLinesValid) {
  const std::string text = "A:1\n 2\nB:3\n 4\n";
  ContentLineScanner scanner(text);
  const auto first = scanner.next();
  const auto second = scanner.next();
  ASSERT_TRUE(first && second);
  EXPECT_EQ(first->value, "12");
  EXPECT_EQ(second->value, "34");
}

TEST(ContentLine, FindsTheColonAfterQuotedParameters) {
  const Line line = onlyLine("ATTENDEE;CN=\"Ada: a; b\":mailto:ada@example.org");
  EXPECT_EQ(line.parameters, ";CN=\"Ada: a; b\"");
  EXPECT_EQ(line.value, "mailto:ada@example.org");
}

TEST(ContentLine, ReadsAnOpenQuoteAsAnOrdinaryByte) {
  EXPECT_EQ(onlyLine("ATTENDEE;CN=\"Ada:mailto:ada@example.org").value, "mailto:ada@example.org");
}

TEST(ContentLine, DropsAGroup) {
  EXPECT_EQ(onlyLine("home.SUMMARY:a").name, "SUMMARY");
}

TEST(ContentLine, HasNoValueWithoutAColon) {
  const std::string text = "NONSENSE\nALSO;A=b\nEMPTY:\n";
  ContentLineScanner scanner(text);
  EXPECT_EQ(scanner.next()->value.data(), nullptr);
  const auto second = scanner.next();
  EXPECT_EQ(second->name, "ALSO");
  EXPECT_EQ(second->value.data(), nullptr);
  const auto third = scanner.next();
  EXPECT_NE(third->value.data(), nullptr);
  EXPECT_TRUE(third->value.empty());
}

TEST(ContentLine, EndsWithTheText) {
  EXPECT_TRUE(scan("").empty());
  EXPECT_TRUE(scan("\r\n\n \t\r\n").empty());
  EXPECT_EQ(onlyLine("A:1").value, "1");
  EXPECT_EQ(onlyLine("A:1\n ").value, "1");
}

TEST(ContentLine, SkipsTheInsideOfAComponent) {
  const std::string text =
      "BEGIN:VTIMEZONE\nTZID:Event\nBEGIN:STANDARD\nEND:STANDARD\nend:vtimezone\nA:1\n";
  ContentLineScanner scanner(text);
  scanner.next();
  scanner.skipToComponent();
  EXPECT_EQ(scanner.next()->value, "vtimezone");
  EXPECT_EQ(scanner.next()->name, "A");
  scanner.skipToComponent();
  EXPECT_FALSE(scanner.next());
}

TEST(Parameter, IsFoundByNameInAnyCase) {
  EXPECT_EQ(parameterOf(";tzid=Europe/Berlin;VALUE=DATE", "TZID"), "Europe/Berlin");
  EXPECT_EQ(parameterOf(";TZID=Europe/Berlin;value=DATE", "VALUE"), "DATE");
  EXPECT_EQ(parameterOf(";X-TZID=a", "TZID"), std::nullopt);
  EXPECT_EQ(parameterOf("", "TZID"), std::nullopt);
  EXPECT_EQ(parameterOf(";TZID", "TZID"), std::nullopt);
  EXPECT_EQ(parameterOf(";TZID=", "TZID"), "");
}

TEST(Parameter, LosesItsQuotesAlone) {
  EXPECT_EQ(parameterOf(";CN=\"a;TZID=b\";TZID=c", "TZID"), "c");
  EXPECT_EQ(parameterOf(";CN=\"a;TZID=b\"", "CN"), "a;TZID=b");
  EXPECT_EQ(parameterOf(";CN=a=b", "CN"), "a=b");
}

}  // namespace
}  // namespace tidemark::local
