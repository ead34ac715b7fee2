#include "app/commands/Manual.h"

#include "app/ExitStatus.h"
#include "app/commands/Declarations.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <sstream>
#include <string>

namespace emeg {

namespace {

const char* const footer = R"(Examples:
  emeg man correct | man -l -
  for command in "" correct convert info simulate evaluate; do
    emeg man $command > ~/.local/share/man/man1/emeg${command:+-$command}.1
  done
)";

/// Text in which troff's own characters stand for themselves.
std::string plain(const std::string& text) {
  std::string result;
  bool atStart = true;
  for (const char letter : text) {
    if (atStart && (letter == '.' || letter == '\'')) result += "\\&";
    if (letter == '\\')
      result += "\\e";
    else if (letter == '-')
      result += "\\-";
    else
      result += letter;
    atStart = letter == '\n';
  }
  return result;
}

void writeTitle(const std::string& page, const std::string& description, std::ostream& out) {
  std::string upper = page;
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
  out << ".TH \"" << upper << "\" 1 \"\" \"emeg " << EMEG_VERSION << "\"\n.SH NAME\n"
      << plain(page) << " \\- " << plain(description) << "\n";
}

void writeOptions(const DeclaredCommand& command, bool positional, std::ostream& out) {
  std::string group;
  for (const DeclaredOption& option : command.options) {
    if (option.isPositional != positional) continue;
    if (!positional && option.group != group) {
      group = option.group;
      out << ".SS " << plain(group) << "\n";
    }
    out << ".TP\n.B ";
    for (const std::string& name : option.names)
      out << (&name == &option.names.front() ? "" : ", ") << plain(name);
    if (!option.value.empty()) out << " \\fI" << plain(option.value) << "\\fR";
    out << "\n" << plain(option.description) << "\n";
  }
}

void writeCommandPage(const DeclaredCommand& command, std::ostream& out) {
  writeTitle("emeg-" + command.name, command.description, out);
  out << ".SH SYNOPSIS\n.B emeg " << command.name << "\n[OPTIONS]";
  for (const DeclaredOption& option : command.options)
    if (option.isPositional)
      out << " " << (option.isRequired ? "" : "[") << plain(option.names[0])
          << (option.isRequired ? "" : "]");
  out << "\n.SH ARGUMENTS\n";
  writeOptions(command, true, out);
  out << ".SH OPTIONS\n";
  writeOptions(command, false, out);
  out << ".SH DESCRIPTION\n.nf\n" << plain(command.footer) << "\n.fi\n.SH SEE ALSO\n.BR emeg (1)\n";
}

void writeProgramPage(const CLI::App& program, const std::vector<DeclaredCommand>& commands,
                      std::ostream& out) {
  std::string description = program.get_description();
  if (description.rfind("emeg: ", 0) == 0) description.erase(0, 6);
  writeTitle("emeg", description, out);
  out << ".SH SYNOPSIS\n.B emeg\nCOMMAND [OPTIONS] ...\n.SH COMMANDS\n";
  for (const DeclaredCommand& command : commands)
    out << ".TP\n.BR emeg\\-" << command.name << " (1)\n" << plain(command.description) << "\n";
}

} // namespace

Command addManualCommand(CLI::App& program) {
  CLI::App* app = program.add_subcommand("man", "Print a manual page");
  const auto name = std::make_shared<std::string>();
  app->add_option("COMMAND", *name, "The command; without one the page of the program");
  app->footer(footer);
  return {app, [&program, name](std::ostream& out, std::ostream& err) {
            const std::vector<DeclaredCommand> commands = declaredCommands(program);
            if (name->empty()) {
              writeProgramPage(program, commands, out);
              return succeeded;
            }
            const auto command = std::find_if(commands.begin(), commands.end(),
                                              [&name](const DeclaredCommand& c) { return c.name == *name; });
            if (command == commands.end()) {
              err << "emeg man: there is no command \"" << *name << "\"; `emeg --help` lists them.\n";
              return unusable;
            }
            writeCommandPage(*command, out);
            return succeeded;
          }};
}

} // namespace emeg
