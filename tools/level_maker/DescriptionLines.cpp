#include "DescriptionLines.h"

#include "Description.h"

#include <charconv>

namespace ql::maker {

std::optional<double> toNumber(std::string_view text) {
  double value = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size() || !(std::fabs(value) <= 1e6)) return std::nullopt;
  return value;
}

std::vector<double> numberList(std::string_view text, int line) {
  std::vector<double> numbers;
  while (true) {
    const std::size_t comma = text.find(',');
    const auto value = toNumber(text.substr(0, comma));
    if (!value) throw DescriptionFault(line, "\"" + std::string(text.substr(0, comma)) + "\" is not a number");
    numbers.push_back(*value);
    if (comma == std::string_view::npos) return numbers;
    text.remove_prefix(comma + 1);
  }
}

double Statement::number(std::size_t index) const {
  const auto value = toNumber(word(index));
  if (!value) throw DescriptionFault(line, "\"" + words[index] + "\" is not a number");
  return *value;
}

const std::string& Statement::word(std::size_t index) const {
  if (index >= words.size())
    throw DescriptionFault(line, command + " needs at least " + std::to_string(index + 1) + " words");
  return words[index];
}

bool Statement::flag(std::string_view name) const { return std::find(words.begin(), words.end(), name) != words.end(); }

double Statement::option(const std::string& key, double fallback) const {
  const auto found = options.find(key);
  return found == options.end() ? fallback : numberList(found->second, line).front();
}

std::string Statement::option(const std::string& key, const std::string& fallback) const {
  const auto found = options.find(key);
  return found == options.end() ? fallback : found->second;
}

std::vector<double> Statement::list(const std::string& key) const {
  const auto found = options.find(key);
  return found == options.end() ? std::vector<double>{} : numberList(found->second, line);
}

Vec3 Statement::vectorOption(const std::string& key, Vec3 fallback) const {
  const std::vector<double> numbers = list(key);
  if (numbers.empty()) return fallback;
  if (numbers.size() != 3) throw DescriptionFault(line, key + " needs three numbers");
  return {numbers[0], numbers[1], numbers[2]};
}

namespace {

constexpr std::string_view kBlank = " \t\r";

Statement readLine(std::string_view text, int number) {
  Statement statement;
  statement.line = number;
  while (true) {
    const std::size_t start = text.find_first_not_of(kBlank);
    if (start == std::string_view::npos) return statement;
    text.remove_prefix(start);
    const std::string_view token = text.substr(0, std::min(text.find_first_of(kBlank), text.size()));
    text.remove_prefix(token.size());
    const std::size_t equals = token.find('=');
    if (statement.command.empty()) {
      statement.command = token;
    } else if (token == "{") {
      statement.opensBlock = true;
    } else if (equals != std::string_view::npos && equals > 0) {
      statement.options[std::string(token.substr(0, equals))] = token.substr(equals + 1);
    } else {
      statement.words.emplace_back(token);
    }
  }
}

}  // namespace

std::vector<Statement> readStatements(std::string_view text) {
  std::vector<Statement> statements;
  std::vector<std::size_t> open;
  int number = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    ++number;
    line = line.substr(0, line.find('#'));
    Statement statement = readLine(line, number);
    if (statement.command.empty()) continue;
    if (statement.command == "}") {
      if (open.empty()) throw DescriptionFault(number, "a closing brace without an opening one");
      statements[open.back()].blockEnd = statements.size();
      open.pop_back();
    } else if (statement.opensBlock) {
      open.push_back(statements.size());
      if (open.size() > 16) throw DescriptionFault(number, "blocks stand more than 16 deep");
    }
    statements.push_back(std::move(statement));
  }
  if (!open.empty()) throw DescriptionFault(statements[open.back()].line, "this block is never closed");
  return statements;
}

}  // namespace ql::maker
