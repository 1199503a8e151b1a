#include "cli/dispatch.h"

#include <studystats/host.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <exception>
#include <new>

#include "cli/command_line.h"
#include "cli/documents.h"
#include "cli/exit_status.h"
#include "cli/interrupt.h"
#include "cli/messages.h"
#include "cli/option_table.h"
#include "cli/outputs.h"
#include "cli/run.h"
#include "cli/terminal.h"
#include "report/report_scripts.h"

namespace studystats::cli {
namespace {

// A file opened later must not become standard output because the caller had closed that.
void occupyStandardDescriptors() {
  for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(descriptor, F_GETFD) == -1) open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

int say(std::string_view text) {
  interrupt::release();
  print(text);
  return kDone;
}

std::string versionText() {
  const std::string pages = whyNoReport().empty() ? "yes" : "no, because " + whyNoReport();
  return fmt::format("studystats {}\n{}\nreport pages: {}\n", version(), buildInfo(), pages);
}

// Options of `studystats` itself, before any command.
int runGlobal(const std::string& option) {
  if (option == "--help" || option == "-h") return say(generalHelp());
  if (option == "--version") return say(versionText());
  if (option == "--man") return say(manPage());
  const std::string name = option.substr(0, option.find('='));
  if (findOption(name) != nullptr)
    refuse(name, fmt::format("{} goes after the command and its table: studystats pca TABLE {} ...", name, name));
  refuse(name, fmt::format("there is no option {}.{}", inQuotes(name), suggestionFor(name, {"--help", "--version"})));
}

int runCompletions(const std::vector<std::string>& arguments) {
  if (arguments.size() != 1) refuse("", "completions wants a shell: studystats completions bash, zsh or fish.");
  return say(completions(arguments.front()));
}

int runCommand(const std::vector<std::string>& arguments) {
  const std::string& name = arguments.front();
  const std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
  if (name.starts_with('-')) return runGlobal(name);
  if (name == "completions") return runCompletions(rest);
  const Command* command = findCommand(name);
  if (command == nullptr) {
    std::vector<std::string> names;
    for (const Command& known : commands()) names.push_back(known.name);
    refuse("", fmt::format("there is no command {}.{}", inQuotes(name), suggestionFor(name, names)),
           nearest(name, names));
  }
  const CommandLine line(*command, rest);
  if (line.wantsHelp()) return say(commandHelp(*command));
  return command->run(line);
}

// "--color always" and the like hold for errors too, even for those in the options themselves.
bool colorWanted(const std::vector<std::string>& arguments) {
  When when = When::Auto;
  for (std::size_t i = 0; i < arguments.size(); ++i)
    for (const auto& known : kColorChoices) {
      const bool joined = arguments[i] == fmt::format("--color={}", known.name);
      if (joined || (arguments[i] == "--color" && i + 1 < arguments.size() && arguments[i + 1] == known.name))
        when = known.value;
    }
  return useColor(when);
}

int fail(const std::vector<std::string>& arguments, std::string_view what, int status) {
  constexpr std::string_view kLabel = "studystats: ";
  std::string text = hanging(kLabel, printable(what));
  if (colorWanted(arguments)) text = fmt::format("\x1b[1;31m{}\x1b[0m{}", kLabel, text.substr(kLabel.size()));
  writeAll(STDERR_FILENO, text);
  return status;
}

int stopped() {
  writeAll(STDERR_FILENO, "stopped: nothing was written.\n");
  return kStopped;
}

}  // namespace

int dispatch(const std::vector<std::string>& arguments) {
  occupyStandardDescriptors();
  interrupt::install();
  if (arguments.empty()) {
    writeAll(STDERR_FILENO, shortUsage());
    return kBadRequest;
  }
  try {
    return runCommand(arguments);
  } catch (const Stopped&) {
    return stopped();
  } catch (const Error& error) {
    // A read that the wish to stop cut short may come back as an unreadable table.
    return interrupt::requested() ? stopped() : fail(arguments, error.what(), error.exitStatus());
  } catch (const std::bad_alloc&) {
    return fail(arguments, "out of memory.", kNotComputed);
  } catch (const std::exception& error) {
    return fail(arguments, fmt::format("a mistake in this program: {}", error.what()), kNotComputed);
  }
}

}  // namespace studystats::cli
