#include "explain/date_problem.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "qel/rfc3339.h"

namespace qel::tool {
namespace {

bool isDigit(char character) { return character >= '0' && character <= '9'; }

// Returns `text` with a 0 for every digit: "0000-00-00".
std::string shapeOf(std::string_view text) {
  std::string shape(text);
  for (char& character : shape) {
    if (isDigit(character)) character = '0';
  }
  return shape;
}

// Returns whether the text becomes readable if its end becomes `replacement`.
bool isReadable(std::string_view start, std::string_view replacement) {
  return parseRfc3339(std::string(start) + std::string(replacement)).has_value();
}

// The reason in what follows the date and the time of day.
DateProblem problemOfEnd(std::string_view dateAndTime, std::string_view end) {
  if (end.empty()) return DateProblem::kNoZone;
  if (!isReadable(dateAndTime, "Z")) return DateProblem::kNoSuchDateOrTime;
  if (end.front() == '.' || end.front() == ',') return DateProblem::kFraction;
  const std::string shape = shapeOf(end);
  if (shape == "+0000" || shape == "-0000" || shape == "+00" || shape == "-00") {
    return DateProblem::kOffsetWithoutColon;
  }
  if (end == "z") return DateProblem::kLowerCase;
  if (shape == "+00:00" || shape == "-00:00") return DateProblem::kNoSuchDateOrTime;
  for (const std::size_t size : {std::size_t{1}, std::size_t{6}, std::size_t{9}}) {
    if (end.size() > size && isReadable(dateAndTime, end.substr(0, size))) {
      return DateProblem::kTextAfterwards;
    }
  }
  return DateProblem::kOther;
}

}  // namespace

DateProblem dateProblem(const OptionalText& text) {
  constexpr std::string_view kDate = "0000-00-00";
  constexpr std::string_view kTime = "00:00:00";
  if (!text.has_value()) return DateProblem::kAbsent;
  if (text->empty()) return DateProblem::kEmpty;

  if (text->size() >= 12 && std::all_of(text->begin(), text->end(), isDigit)) {
    return DateProblem::kMilliseconds;
  }
  if (shapeOf(text->substr(0, kDate.size())) != kDate) return DateProblem::kOther;
  const std::string_view date = text->substr(0, kDate.size());
  const std::string_view rest = text->substr(kDate.size());
  if (rest.empty()) return DateProblem::kNoTime;
  if (shapeOf(rest.substr(1, kTime.size())) != kTime) return DateProblem::kOther;

  const std::string_view end = rest.substr(1 + kTime.size());
  switch (rest.front()) {
    case 'T':
      return problemOfEnd(text->substr(0, kDate.size() + 1 + kTime.size()), end);
    case 't':
      return DateProblem::kLowerCase;
    case ' ': {
      const std::string dateAndTime =
          std::string(date) + "T" + std::string(rest.substr(1, kTime.size()));
      const bool isNamedZone = end.size() > 2 && end[0] == ' ' && !isDigit(end[1]) &&
                               end.find('/') != std::string_view::npos;
      if (isNamedZone && isReadable(dateAndTime, "Z")) return DateProblem::kServiceForm;
      return DateProblem::kSpaceForT;
    }
    default:
      return DateProblem::kOther;
  }
}

std::string_view describe(DateProblem problem) {
  switch (problem) {
    case DateProblem::kAbsent:
      return "no date";
    case DateProblem::kEmpty:
      return "the date is empty";
    case DateProblem::kServiceForm:
      return "the form of the store's validation service, with a space and the zone's name";
    case DateProblem::kMilliseconds:
      return "a number, perhaps milliseconds since 1970";
    case DateProblem::kNoTime:
      return "no time of day";
    case DateProblem::kSpaceForT:
      return "a space between date and time instead of T";
    case DateProblem::kFraction:
      return "a fraction of a second";
    case DateProblem::kNoZone:
      return "no time zone";
    case DateProblem::kOffsetWithoutColon:
      return "offset without a colon";
    case DateProblem::kLowerCase:
      return "lower-case t or z";
    case DateProblem::kNoSuchDateOrTime:
      return "no such date, time or offset";
    case DateProblem::kTextAfterwards:
      return "text after the time zone";
    case DateProblem::kOther:
      break;
  }
  return "no RFC 3339 timestamp";
}

}  // namespace qel::tool
