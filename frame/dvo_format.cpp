// Positional formatting. Arguments are kept as finished texts and put into the format in one pass at the end, so that a
// percent sign inside an argument (a column may be called "50 %2 conc") is never taken for a placeholder.
#include <studystats/host_framework.h>

#include <locale>

namespace Dvo {

DvoFormat::DvoFormat(std::string format) : format_(std::move(format)) {
  stream_.imbue(std::locale::classic());
  stream_.exceptions(std::ios::badbit);  // exhausted memory comes through instead of cutting a text short
}

DvoFormat::~DvoFormat() = default;

void DvoFormat::AfterInsertion() {
  arguments_.push_back(stream_.str());
  stream_.str(std::string());
}

DvoFormat::operator std::string() const {
  std::string text;
  for (std::size_t i = 0; i < format_.size(); ++i) {
    const char next = i + 1 < format_.size() ? format_[i + 1] : '\0';
    const std::size_t number = next >= '1' && next <= '9' ? std::size_t(next - '0') : 0;
    if (format_[i] == '%' && number > 0 && number <= arguments_.size()) {
      text += arguments_[number - 1];
      ++i;
    } else {
      text += format_[i];
    }
  }
  return text;
}

DvoFormat& operator<<(DvoFormat& format, const std::string& text) {
  format.stream_ << text;
  format.AfterInsertion();
  return format;
}

DvoFormat& operator<<(DvoFormat& format, double number) {
  format.stream_ << number;
  format.AfterInsertion();
  return format;
}

}  // namespace Dvo
