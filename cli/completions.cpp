// Completion scripts for bash, zsh and fish.
#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "cli/documents.h"
#include "cli/messages.h"

namespace studystats::cli {
namespace {

std::string joined(const std::vector<std::string>& words, std::string_view separator = " ") {
  return fmt::format("{}", fmt::join(words, separator));
}

std::vector<std::string> commandNames() {
  std::vector<std::string> names;
  for (const Command& command : commands()) names.push_back(command.name);
  return names;
}

// A replacement of single characters, for the quoting rules of a shell.
std::string quotedFor(std::string_view text, std::string_view special, std::string_view escape) {
  std::string result;
  for (const char c : text) {
    if (special.find(c) != std::string_view::npos) result += escape;
    result += c;
  }
  return result;
}

// What a shell completes after the option, each option name once.
std::vector<const Option*> optionsWithCompletions() {
  std::vector<const Option*> found;
  for (const Option& option : options()) {
    const bool known = std::any_of(found.begin(), found.end(), [&](const Option* o) { return o->name == option.name; });
    if (!known && (!option.choices.empty() || option.completes == Completes::Folders)) found.push_back(&option);
  }
  return found;
}

std::string bash() {
  std::string text = "# bash completion for studystats\n_studystats() {\n";
  text +=
      "  local current=\"${COMP_WORDS[COMP_CWORD]}\" previous=\"${COMP_WORDS[COMP_CWORD-1]}\"\n"
      "  COMPREPLY=()\n"
      "  if [[ $COMP_CWORD -eq 1 ]]; then\n";
  text += fmt::format("    COMPREPLY=($(compgen -W \"{} --help --version\" -- \"$current\"))\n    return\n  fi\n",
                      joined(commandNames()));
  text +=
      "  # --option=value comes as three words\n"
      "  [[ $current == '=' ]] && current=''\n"
      "  [[ $previous == '=' ]] && previous=\"${COMP_WORDS[COMP_CWORD-2]}\"\n"
      "  case \"$previous\" in\n";
  for (const Option* option : optionsWithCompletions()) {
    const std::string words = option->choices.empty() ? "-d" : fmt::format("-W \"{}\"", joined(option->choices));
    text += fmt::format("    {}) COMPREPLY=($(compgen {} -- \"$current\")); return ;;\n", option->name, words);
  }
  text += "  esac\n  [[ $current == -* ]] || return\n  case \"${COMP_WORDS[1]}\" in\n";
  for (const Command& command : commands())
    text += fmt::format("    {}) COMPREPLY=($(compgen -W \"{}\" -- \"$current\")) ;;\n", command.name,
                        joined(optionNames(command.bit)));
  return text + "  esac\n}\ncomplete -o default -F _studystats studystats\n";
}

std::string zshOption(const Option& option) {
  std::string text = option.repeatable ? "'*" : "'";
  text += option.name + '[' + quotedFor(quotedFor(option.gist(), "[]:", "\\"), "'", "'\\'") + ']';
  if (!option.takesValue()) return text + '\'';
  text += ':' + quotedFor(quotedFor(option.placeholder, ":[]", "\\"), "'", "'\\'") + ':';
  if (!option.choices.empty()) return text + '(' + joined(option.choices) + ")'";
  if (option.completes == Completes::Files) return text + "_files'";
  if (option.completes == Completes::Folders) return text + "_files -/'";
  return text + " '";
}

std::string zsh() {
  std::string text = "#compdef studystats\n_studystats() {\n  if (( CURRENT == 2 )); then\n    local -a known=(\n";
  for (const Command& command : commands())
    text += fmt::format("      '{}:{}'\n", command.name, quotedFor(command.purpose, "'", "'\\'"));
  text +=
      "    )\n    _describe command known\n    return\n  fi\n  local command=$words[2]\n"
      "  shift words\n  (( CURRENT-- ))\n  case $command in\n";
  for (const Command& command : commands()) {
    text += fmt::format("    {})\n      _arguments \\\n", command.name);
    for (const Group group : kGroups)
      for (const Option* option : optionsOf(command.bit, group))
        text += fmt::format("        {} \\\n", zshOption(*option));
    for (const std::string& operand : command.operands) text += fmt::format("        ':{}:_files' \\\n", operand);
    text += "        && return\n      ;;\n";
  }
  return text + "  esac\n}\n_studystats \"$@\"\n";
}

std::string fish() {
  std::string text = "# fish completion for studystats\n";
  for (const Command& command : commands())
    text += fmt::format("complete -c studystats -n __fish_use_subcommand -f -a {} -d '{}'\n", command.name,
                        quotedFor(command.purpose, "'\\", "\\"));
  for (const Command& command : commands()) {
    for (const Group group : kGroups) {
      for (const Option* option : optionsOf(command.bit, group)) {
        text += fmt::format("complete -c studystats -n '__fish_seen_subcommand_from {}' -l {} -d '{}'", command.name,
                            option->name.substr(2), quotedFor(option->gist(), "'\\", "\\"));
        if (!option->choices.empty()) text += fmt::format(" -x -a '{}'", joined(option->choices));
        if (option->completes == Completes::Files) text += " -r";
        if (option->completes == Completes::Folders) text += " -x -a '(__fish_complete_directories)'";
        if (option->takesValue() && option->choices.empty() && option->completes == Completes::Nothing) text += " -x";
        text += '\n';
      }
    }
  }
  return text;
}

}  // namespace

std::string completions(std::string_view shell) {
  if (shell == "bash") return bash();
  if (shell == "zsh") return zsh();
  if (shell == "fish") return fish();
  refuse("", fmt::format("there are no completions for {}.{}", inQuotes(shell),
                         suggestionFor(shell, {"bash", "zsh", "fish"})));
}

}  // namespace studystats::cli
