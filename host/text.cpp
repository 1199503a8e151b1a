// Numbers, lists and paragraphs as text.
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace studystats {
namespace {

constexpr int kSmallestPlain = -5;  // powers of ten that are written without exponent
constexpr int kLargestPlain = 8;

// The power of ten of the first digit once the value is rounded to `digits` digits.
int decimalExponent(double value, int digits) {
  const std::string scientific = fmt::format("{:.{}e}", value, digits - 1);
  const std::size_t e = scientific.find('e') + 1;
  const bool plus = scientific[e] == '+';
  int exponent = 0;
  std::from_chars(scientific.data() + e + (plus ? 1 : 0), scientific.data() + scientific.size(), exponent);
  return exponent;
}

// Adds words to lines of limited width, the first of which follows a label.
class Lines {
 public:
  explicit Lines(std::string_view label) : text_(label), indent_(textWidth(label)), used_(indent_) {}

  void add(std::string_view word, std::string_view separator) {
    const std::size_t width = textWidth(word);
    if (!empty_ && used_ + textWidth(separator) + width > kTextWidth) {
      end();
    } else if (!empty_) {
      text_ += separator;
      used_ += textWidth(separator);
    }
    if (empty_) makeRoom(width);
    text_ += word;
    used_ += width;
    empty_ = false;
  }

  void end() {
    endLine();
    text_.append(indent_, ' ');
    used_ = indent_;
    empty_ = true;
  }

  std::string finish() {
    endLine();
    return std::move(text_);
  }

 private:
  // A word too long for the indented line starts further left, on a line of its own.
  void makeRoom(std::size_t width) {
    if (used_ + width <= kTextWidth) return;
    if (text_.find_first_not_of(' ', text_.size() - indent_) != std::string::npos) end();
    for (; used_ > 0 && used_ + width > kTextWidth; --used_) text_.pop_back();
  }

  void endLine() {
    while (!text_.empty() && text_.back() == ' ') text_.pop_back();
    text_ += '\n';
  }

  std::string text_;
  std::size_t indent_;
  std::size_t used_;
  bool empty_ = true;
};

// Where the word that starts at `from` ends: at a blank without another beside it, a line end, or the text's end.
std::size_t wordEnd(std::string_view text, std::size_t from) {
  for (std::size_t i = from; i < text.size(); ++i) {
    if (text[i] == '\n') return i;
    const bool alone = (i == 0 || text[i - 1] != ' ') && (i + 1 == text.size() || text[i + 1] != ' ');
    if (text[i] == ' ' && alone) return i;
  }
  return text.size();
}

std::string withoutZerosAtEnd(std::string number) {
  const std::size_t point = number.find('.');
  if (point == std::string::npos) return number;
  const std::size_t end = std::min(number.find('e'), number.size());
  std::size_t keep = end;
  while (number[keep - 1] == '0') --keep;
  if (keep - 1 == point) --keep;
  return number.erase(keep, end - keep);
}

}  // namespace

std::string significant(double value, int digits) {
  digits = std::clamp(digits, 1, 17);
  if (std::isnan(value)) return "-";
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  if (value == 0) return "0";
  const int exponent = decimalExponent(value, digits);
  if (exponent < kSmallestPlain || exponent > std::max(kLargestPlain, digits - 1))
    return fmt::format("{:.{}e}", value, digits - 1);
  return fmt::format("{:.{}f}", value, std::max(0, digits - 1 - exponent));
}

std::string significant(const std::optional<double>& value, int digits) {
  return value ? significant(*value, digits) : "-";
}

std::string brief(double value, int digits) { return withoutZerosAtEnd(significant(value, digits)); }

std::string brief(const std::optional<double>& value, int digits) { return value ? brief(*value, digits) : "-"; }

std::string fixed(double value, int decimals) {
  if (std::isnan(value)) return "-";
  if (std::abs(value) >= 1e15) return significant(value, 6);
  std::string text = fmt::format("{:.{}f}", value, decimals);
  if (text.front() == '-' && text.find_first_not_of("-0.") == std::string::npos) text.erase(0, 1);
  return text;
}

std::string sized(double value, double size, int digits) {
  const int decimals =
      size > 0 && std::isfinite(size) ? digits - 1 - static_cast<int>(std::floor(std::log10(size))) : 0;
  return decimals > 9 ? significant(value, digits) : fixed(value, std::max(0, decimals));
}

std::string percent(double fraction, int decimals) {
  return std::isnan(fraction) ? "-" : fixed(100 * fraction, decimals) + " %";
}

std::string explained(double value) {
  return fixed(value, value > 0.9995 && value < 1 ? 6 : value > 0.995 && value < 1 ? 4 : 3);
}

std::string exact(double value) { return std::isnan(value) ? std::string() : fmt::format("{}", value); }

std::string counted(std::size_t n, std::string_view one, std::string_view many) {
  if (n == 1) return fmt::format("1 {}", one);
  return many.empty() ? fmt::format("{} {}s", n, one) : fmt::format("{} {}", n, many);
}

std::string listed(const std::vector<std::string>& names, std::size_t most) {
  const std::size_t shown = names.size() <= most + 1 ? names.size() : most;
  std::string text;
  for (std::size_t i = 0; i < shown; ++i) text += (i > 0 ? ", " : "") + names[i];
  if (shown < names.size()) text += fmt::format("{}{} more", shown > 0 ? ", " : "", names.size() - shown);
  return text;
}

std::string wrapped(std::string_view label, std::string_view text) {
  Lines lines(label);
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t to = wordEnd(text, from);
    lines.add(text.substr(from, to - from), " ");
    if (to < text.size() && text[to] == '\n') lines.end();
    from = to + 1;
  }
  return lines.finish();
}

std::string wrappedItems(std::string_view label, const std::vector<std::string>& items, std::string_view separator) {
  Lines lines(label);
  const std::size_t held = std::min(separator.find_last_not_of(' ') + 1, separator.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    const bool last = i + 1 == items.size();
    lines.add(items[i] + std::string(last ? "" : separator.substr(0, held)), separator.substr(held));
  }
  return lines.finish();
}

std::string plain(std::string_view text) {
  constexpr std::pair<std::string_view, std::string_view> kPlain[] = {{"R²", "R2"}, {"q²", "q2"}, {"T²", "T2"}};
  std::string result(text);
  for (const auto& [symbol, ascii] : kPlain)
    for (std::size_t at = 0; (at = result.find(symbol, at)) != std::string::npos;)
      result.replace(at, symbol.size(), ascii);
  return result;
}

std::size_t textWidth(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

}  // namespace studystats
