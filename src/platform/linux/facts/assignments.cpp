#include "platform/linux/facts/assignments.h"

#include <algorithm>

#include "platform/linux/facts/root_files.h"

namespace quorvance {
namespace {

bool isNameCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

/// A shell word from its beginning to the first blank outside of quotes.
std::string unquoted(std::string_view word) {
  std::string value;
  char quote = '\0';
  for (std::size_t i = 0; i < word.size(); ++i) {
    const char c = word[i];
    if (quote == '\0' && (c == ' ' || c == '\t')) break;
    if (c == quote) {
      quote = '\0';
    } else if (quote == '\0' && (c == '"' || c == '\'')) {
      quote = c;
    } else if (c == '\\' && quote != '\'' && i + 1 < word.size()) {
      value += word[++i];
    } else {
      value += c;
    }
  }
  return value;
}

std::string_view withoutBlanksInFront(std::string_view line) {
  return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

void addAssignment(Assignments& assignments, std::string_view line) {
  line = withoutBlanksInFront(line);
  if (line.ends_with('\r')) line.remove_suffix(1);
  const std::size_t equals = line.find('=');
  if (equals == 0 || equals == std::string_view::npos) return;
  const std::string_view name = line.substr(0, equals);
  if (!std::all_of(name.begin(), name.end(), isNameCharacter)) return;
  assignments.insert_or_assign(std::string(name), unquoted(line.substr(equals + 1)));
}

}  // namespace

Assignments parseAssignments(std::string_view text) {
  Assignments assignments;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    addAssignment(assignments, text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return assignments;
}

std::optional<std::string> assigned(const Assignments& assignments, std::string_view name) {
  const auto found = assignments.find(name);
  return found == assignments.end() ? std::nullopt : cleanFact(found->second);
}

}  // namespace quorvance
