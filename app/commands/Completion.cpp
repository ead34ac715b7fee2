#include "app/commands/Completion.h"

#include "app/ExitStatus.h"
#include "app/commands/Declarations.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

namespace emeg {

namespace {

const char* const footer = R"(Examples:
  emeg completion bash > ~/.local/share/bash-completion/completions/emeg
  emeg completion zsh > ~/.zfunc/_emeg          (a folder in $fpath)
  emeg completion fish > ~/.config/fish/completions/emeg.fish
)";

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

std::string namesOf(const std::vector<DeclaredCommand>& commands) {
  std::vector<std::string> names;
  names.reserve(commands.size());
  for (const DeclaredCommand& command : commands) names.push_back(command.name);
  return joined(names);
}

/// For a text between single quotes of a shell.
std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char letter : text) result += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
  return result + "'";
}

void writeBash(const std::vector<DeclaredCommand>& commands, std::ostream& out) {
  out << "_emeg() {\n"
         "  local word=${COMP_WORDS[COMP_CWORD]} options=\n"
         "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
         "    COMPREPLY=($(compgen -W \""
      << namesOf(commands)
      << " --help --version\" -- \"$word\"))\n"
         "    return\n"
         "  fi\n"
         "  case ${COMP_WORDS[1]} in\n";
  for (const DeclaredCommand& command : commands) {
    std::vector<std::string> names;
    for (const DeclaredOption& option : command.options)
      if (!option.isPositional) names.insert(names.end(), option.names.begin(), option.names.end());
    out << "  " << command.name << ") options=\"" << joined(names) << "\" ;;\n";
  }
  out << "  esac\n"
         "  case $word in\n"
         "  -*) COMPREPLY=($(compgen -W \"$options\" -- \"$word\")) ;;\n"
         "  *) COMPREPLY=($(compgen -f -- \"$word\")) ;;\n"
         "  esac\n"
         "}\n"
         "complete -o filenames -F _emeg emeg\n";
}

/// In what zsh reads brackets and colons have a meaning.
std::string zshText(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    if (letter == '[' || letter == ']' || letter == ':' || letter == '\\') result += '\\';
    result += letter;
  }
  return result;
}

void writeZsh(const std::vector<DeclaredCommand>& commands, std::ostream& out) {
  out << "#compdef emeg\n_emeg() {\n  if (( CURRENT == 2 )); then\n    local -a commands=(\n";
  for (const DeclaredCommand& command : commands)
    out << "      " << quoted(command.name + ":" + command.description) << "\n";
  out << "    )\n    _describe command commands\n    return\n  fi\n  case $words[2] in\n";
  for (const DeclaredCommand& command : commands) {
    out << "  " << command.name << ")\n    shift words; (( CURRENT-- ))\n    _arguments";
    for (const DeclaredOption& option : command.options) {
      if (option.isPositional) continue;
      for (const std::string& name : option.names)
        out << " \\\n      "
            << quoted(name + "[" + zshText(option.description) + "]" +
                      (option.takesFile    ? ":file:_files"
                       : option.takesValue ? ":value:"
                                           : ""));
    }
    out << " \\\n      '*:file:_files'\n    ;;\n";
  }
  out << "  esac\n}\n_emeg \"$@\"\n";
}

void writeFish(const std::vector<DeclaredCommand>& commands, std::ostream& out) {
  for (const DeclaredCommand& command : commands)
    out << "complete -c emeg -n __fish_use_subcommand -a " << command.name << " -d "
        << quoted(command.description) << "\n";
  for (const DeclaredCommand& command : commands) {
    for (const DeclaredOption& option : command.options) {
      if (option.isPositional) continue;
      out << "complete -c emeg -n '__fish_seen_subcommand_from " << command.name << "'";
      for (const std::string& name : option.names)
        out << (name.rfind("--", 0) == 0 ? " -l " + name.substr(2) : " -s " + name.substr(1));
      out << (option.takesFile    ? " -r -F"
              : option.takesValue ? " -x"
                                  : "")
          << " -d " << quoted(option.description) << "\n";
    }
  }
}

} // namespace

Command addCompletionCommand(CLI::App& program) {
  CLI::App* app = program.add_subcommand("completion", "Print a completion script for a shell");
  const auto shell = std::make_shared<std::string>();
  app->add_option("SHELL", *shell, "bash, zsh or fish")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  app->footer(footer);
  return {app, [&program, shell](std::ostream& out, std::ostream&) {
            const std::vector<DeclaredCommand> commands = declaredCommands(program);
            if (*shell == "bash") writeBash(commands, out);
            if (*shell == "zsh") writeZsh(commands, out);
            if (*shell == "fish") writeFish(commands, out);
            return succeeded;
          }};
}

} // namespace emeg
