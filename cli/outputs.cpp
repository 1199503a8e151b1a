#include "cli/outputs.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "cli/messages.h"

namespace fs = std::filesystem;

namespace studystats::cli {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;  // written between two looks at a wish to stop

[[noreturn]] void cannotWrite(const std::string& option, const fs::path& path, const std::string& why) {
  refuse(option, fmt::format("{}: cannot write {}: {}.", option, inQuotes(path.string()), why));
}

std::string reason(int error) { return std::generic_category().message(error); }

// The folder in which `path` will stand.
fs::path folderOf(const fs::path& path) {
  const fs::path parent = path.parent_path();
  return parent.empty() ? fs::path(".") : parent;
}

// Where a file really goes: a link's target keeps its link.
fs::path resolved(const fs::path& path) {
  std::error_code ignored;
  const fs::path real = fs::weakly_canonical(fs::absolute(path, ignored), ignored);
  return real.empty() ? path : real;
}

bool isSpecial(const fs::path& path) {
  std::error_code ignored;
  const fs::file_status status = fs::status(path, ignored);
  return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

void checkInputs(const std::string& option, const fs::path& path, const std::vector<std::string>& inputs) {
  std::error_code ignored;
  for (const std::string& input : inputs)
    if (input != "-" && !isSpecial(path) && fs::equivalent(path, input, ignored))
      refuse(option, fmt::format("{} {} would overwrite the table that is read.", option, inQuotes(path.string())));
}

void checkFile(const std::string& option, const fs::path& path) {
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) cannotWrite(option, path, "it is a folder");
  if (isSpecial(path)) return;
  const fs::path folder = folderOf(resolved(path));
  if (!fs::exists(folder, ignored)) cannotWrite(option, path, "there is no folder " + inQuotes(folder.string()));
  if (!fs::is_directory(folder, ignored)) cannotWrite(option, path, inQuotes(folder.string()) + " is no folder");
  if (access(folder.c_str(), W_OK | X_OK) != 0) cannotWrite(option, path, reason(errno));
}

void checkFolder(const std::string& option, const fs::path& wanted) {
  std::error_code ignored;
  fs::path folder = wanted.lexically_normal();
  while (!fs::exists(folder, ignored)) {  // the rest is made
    const fs::path outer = folderOf(folder.has_filename() ? folder : folder.parent_path());
    if (outer == folder) break;
    folder = outer;
  }
  if (!fs::is_directory(folder, ignored)) cannotWrite(option, wanted, inQuotes(folder.string()) + " is no folder");
  if (access(folder.c_str(), W_OK | X_OK) != 0) cannotWrite(option, wanted, reason(errno));
}

}  // namespace

void checkTargets(const OutputOptions& output, const std::vector<std::string>& inputs) {
  std::vector<std::pair<std::string, fs::path>> files;
  if (!output.json.empty() && !output.jsonOnStandardOutput()) files.emplace_back("--json", output.json);
  if (!output.rows.empty()) files.emplace_back("--output", output.rows);
  if (!output.model.empty()) files.emplace_back("--model", output.model);
  if (!output.page.empty()) files.emplace_back("--report", output.page);
  for (const auto& [option, path] : files) {
    if (path == "-") refuse(option, option + " writes a file; only --json - writes to standard output.");
    checkInputs(option, path, inputs);
    checkFile(option, path);
  }
  for (auto one = files.begin(); one != files.end(); ++one)
    for (auto other = one + 1; other != files.end(); ++other)
      if (resolved(one->second) == resolved(other->second) && !isSpecial(one->second))
        refuse(one->first,
               fmt::format("{} and {} both name {}.", one->first, other->first, inQuotes(one->second.string())));
  if (output.tables.empty()) return;
  if (output.tables == "-")
    refuse("--tables", "--tables writes into a folder; only --json - writes to standard output.");
  checkInputs("--tables", output.tables, inputs);
  checkFolder("--tables", output.tables);
}

OutputFiles::~OutputFiles() { undo(); }

void OutputFiles::add(std::string option, const fs::path& path, std::string content) {
  checkInputs(option, path, inputs_);
  File file{std::move(option), path, resolved(path), {}, std::move(content), isSpecial(path)};
  for (const File& other : files_)
    if (!file.direct && other.target == file.target)
      refuse(file.option, fmt::format("{} and {} both write {}.", other.option, file.option, inQuotes(path.string())));
  files_.push_back(std::move(file));
}

void OutputFiles::addFolder(const fs::path& folder, std::vector<CsvFile> files) {
  folders_.push_back(folder);
  for (CsvFile& file : files) add("--tables", folder / file.name, std::move(file.content));
}

void OutputFiles::makeFolders() {
  for (const fs::path& folder : folders_) {
    fs::path so_far;
    for (const fs::path& part : folder) {
      so_far /= part;
      std::error_code error;
      if (so_far.empty() || fs::is_directory(so_far, error)) continue;
      if (!fs::create_directory(so_far, error)) cannotWrite("--tables", folder, error.message());
      madeFolders_.push_back(so_far);
    }
  }
}

void OutputFiles::open(File& file) {
  if (file.direct) {
    file.descriptor = ::open(file.shown.c_str(), O_WRONLY | O_CLOEXEC);
    if (file.descriptor < 0) cannotWrite(file.option, file.shown, reason(errno));
    return;
  }
  if (fs::is_directory(file.target)) cannotWrite(file.option, file.shown, "it is a folder");
  std::string pattern = (folderOf(file.target) / ".studystats-XXXXXX").string();
  file.descriptor = mkstemp(pattern.data());
  if (file.descriptor < 0) cannotWrite(file.option, file.shown, reason(errno));
  file.temporary = pattern;
  struct stat before {};
  const mode_t mask = umask(0);
  umask(mask);
  const mode_t mode = stat(file.target.c_str(), &before) == 0 ? before.st_mode & 07777u : 0666u & ~mask;
  if (fchmod(file.descriptor, mode) != 0) cannotWrite(file.option, file.shown, reason(errno));
}

void OutputFiles::close(File& file, bool written, int error) {
  const int descriptor = std::exchange(file.descriptor, -1);
  if (::close(descriptor) != 0 && written) {
    written = false;
    error = errno;
  }
  if (!written) cannotWrite(file.option, file.shown, reason(error));
}

void OutputFiles::stage(File& file, const std::function<bool()>& stop) {
  open(file);
  bool written = true;
  for (std::size_t at = 0; written && at < file.content.size(); at += kBlock) {
    written = writeAll(file.descriptor, std::string_view(file.content).substr(at, kBlock));
    if (stop()) throw Stopped();
  }
  close(file, written, errno);
}

std::size_t OutputFiles::begin(std::string option, const fs::path& path) {
  add(std::move(option), path, {});
  open(files_.back());
  return files_.size() - 1;
}

void OutputFiles::append(std::size_t file, std::string_view text) {
  File& one = files_[file];
  if (writeAll(one.descriptor, text) || (one.direct && errno == EPIPE)) return;
  cannotWrite(one.option, one.shown, reason(errno));
}

void OutputFiles::write(const std::function<bool()>& stop) {
  makeFolders();
  for (File& file : files_) {
    const bool grown = file.descriptor >= 0;
    if (grown) close(file, true, 0);
    if (grown || file.direct) continue;
    // The folder may have been made a moment ago, and links are followed through it.
    file.target = resolved(file.shown);
    stage(file, stop);
  }
  if (stop()) throw Stopped();
  for (File& file : files_) {
    if (file.direct) continue;
    if (std::rename(file.temporary.c_str(), file.target.c_str()) != 0)
      cannotWrite(file.option, file.shown, reason(errno));
    file.temporary.clear();
  }
  madeFolders_.clear();
  for (const File& file : files_) {
    if (!file.direct || file.content.empty()) continue;
    const int descriptor = ::open(file.shown.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) cannotWrite(file.option, file.shown, reason(errno));
    const bool written = writeAll(descriptor, file.content) || errno == EPIPE;
    const int error = errno;
    ::close(descriptor);
    if (!written) cannotWrite(file.option, file.shown, reason(error));
  }
}

void OutputFiles::undo() noexcept {
  std::error_code ignored;
  for (const File& file : files_)
    if (file.descriptor >= 0) ::close(file.descriptor);
  for (const File& file : files_)
    if (!file.temporary.empty()) fs::remove(file.temporary, ignored);
  for (auto folder = madeFolders_.rbegin(); folder != madeFolders_.rend(); ++folder) fs::remove(*folder, ignored);
}

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t n = ::write(descriptor, text.data(), text.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(n));
  }
  return true;
}

}  // namespace studystats::cli
