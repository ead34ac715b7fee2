#include "app/commands/Declarations.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>

namespace emeg {

namespace {

/// Options of any command whose value is a path.
bool namesFile(const std::string& name) {
  constexpr std::array<const char*, 6> names = {"--output",     "--scratch", "--truth",
                                                "--transcript", "--before",  "--json"};
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// The type's name without what the parser appends for its checks.
std::string valueNameOf(const CLI::Option& option) {
  std::string name = option.get_type_name();
  for (const char* check : {":INT in [", ":FLOAT in [", ":UINT in [", ":DIR", ":FILE", ":{"})
    name = name.substr(0, name.find(check));
  return name;
}

DeclaredOption declared(const CLI::Option& option) {
  DeclaredOption result;
  result.isPositional = option.get_positional();
  for (const std::string& name : option.get_snames()) result.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) result.names.push_back("--" + name);
  if (result.isPositional) result.names = {option.get_name(true)};
  result.description = option.get_description();
  result.group = option.get_group();
  result.isRequired = option.get_required();
  result.takesValue = option.get_items_expected_max() > 0;
  if (result.takesValue && !result.isPositional) result.value = valueNameOf(option);
  result.takesFile = result.takesValue && (result.isPositional ||
                                           std::any_of(result.names.begin(), result.names.end(), namesFile));
  return result;
}

} // namespace

std::vector<DeclaredCommand> declaredCommands(const CLI::App& program) {
  std::vector<DeclaredCommand> commands;
  for (const CLI::App* app : program.get_subcommands([](const CLI::App*) { return true; })) {
    DeclaredCommand command;
    command.name = app->get_name();
    command.description = app->get_description();
    command.footer = app->get_footer();
    for (const CLI::Option* option : app->get_options()) command.options.push_back(declared(*option));
    commands.push_back(std::move(command));
  }
  return commands;
}

} // namespace emeg
