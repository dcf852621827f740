// The subcommands of kelo and the program's entry point.
//
// Adding a subcommand: write cmd_NAME.cc defining `Command NameCommand()`
// (name, help text, options, run function and optionally a demo function),
// declare it below, list it in Commands() in commands.cc and add the file
// to KELO_CLI_SOURCES in CMakeLists.txt. Help, option parsing, error
// reporting and `kelo demo` pick it up from the table.
#ifndef KELO_TOOLS_KELO_COMMAND_H_
#define KELO_TOOLS_KELO_COMMAND_H_

#include <cstdio>
#include <string>
#include <vector>

#include "tools/kelo/args.h"

namespace kelo {
namespace cli {

class DemoContext;

struct Command {
  const char* name;
  const char* summary;  // one line for the command list
  const char* usage;    // synopsis lines after "kelo "
  const char* about;    // what it does, for `kelo help NAME`
  std::vector<OptionSpec> options;
  // Does the work; returns the exit status. Errors are thrown as
  // UsageError / RunError.
  int (*run)(const Args& args);
  // Adds this command's results to `kelo demo`; may be null.
  void (*demo)(DemoContext* ctx);
};

Command AnaglyphCommand();
Command ConvertCommand();
Command CopyCommand();
Command CropCommand();
Command DeblockCommand();
Command DemoCommand();
Command EnhanceCommand();
Command FourccCommand();
Command HelpCommand();
Command InfoCommand();
Command PadCommand();
Command ProbeCommand();
Command ResizeCommand();
Command RotateCommand();
Command TonemapCommand();

// Every subcommand, in the order help lists them.
const std::vector<Command>& Commands();
const Command* FindCommand(const std::string& name);

void PrintOverview(std::FILE* out);
void PrintCommandHelp(std::FILE* out, const Command& c);

// The whole program: parses argv, runs the subcommand, reports errors as
// one "kelo: ..." line. Returns the exit status (0, 1 run-time error,
// 2 usage error).
int Main(int argc, char** argv);

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_COMMAND_H_
