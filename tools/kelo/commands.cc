// The subcommand table, help, and the program's entry point.
#include <cstring>
#include <new>

#include "tools/kelo/command.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"

#ifndef KELO_VERSION
#define KELO_VERSION "unknown"
#endif

namespace kelo {
namespace cli {
namespace {

int RunHelp(const Args& args) {
  args.ExpectPositional(0, 1);
  if (args.positional().empty()) {
    PrintOverview(stdout);
    return 0;
  }
  const Command* c = FindCommand(args.positional()[0]);
  if (c == nullptr) {
    throw UsageError("help: unknown command '" + args.positional()[0] + "'");
  }
  PrintCommandHelp(stdout, *c);
  return 0;
}

bool IsHelpFlag(const std::string& a) { return a == "-h" || a == "--help"; }

// Runs argv[1..]; errors are thrown.
int Dispatch(const std::vector<std::string>& argv) {
  if (argv.empty()) {
    throw UsageError("no command given (kelo help lists the commands)");
  }
  const std::string& first = argv[0];
  if (IsHelpFlag(first)) {
    PrintOverview(stdout);
    return 0;
  }
  if (first == "--version") {
    std::printf("kelo %s\n", KELO_VERSION);
    return 0;
  }
  const Command* c = FindCommand(first);
  if (c == nullptr) {
    const char* what = first[0] == '-' ? "option" : "command";
    throw UsageError(std::string("unknown ") + what + " '" + first +
                     "' (kelo help lists the commands)");
  }
  const std::vector<std::string> rest(argv.begin() + 1, argv.end());
  for (const std::string& a : rest) {
    if (a == "--") break;
    if (IsHelpFlag(a)) {
      PrintCommandHelp(stdout, *c);
      return 0;
    }
  }
  return c->run(Args::Parse(c->name, c->options, rest));
}

// Error text on one line.
std::string OneLine(std::string s) {
  for (char& ch : s) {
    if (ch == '\n' || ch == '\r') ch = ' ';
  }
  return s;
}

}  // namespace

Command HelpCommand() {
  return {"help",
          "show the commands, or the options of one",
          "help [COMMAND]",
          "Without COMMAND, lists the commands; with it, shows its usage and\n"
          "options. 'kelo COMMAND --help' does the same.\n",
          {},
          RunHelp,
          nullptr};
}

const std::vector<Command>& Commands() {
  static const std::vector<Command> table = {
      ConvertCommand(),
      CopyCommand(),
      RotateCommand(),
      ResizeCommand(),
      TonemapCommand(),
      CropCommand(),
      PadCommand(),
      AnaglyphCommand(),
      DeblockCommand(),
      EnhanceCommand(),
      DemoCommand(),
      InfoCommand(),
      ProbeCommand(),
      FourccCommand(),
      HelpCommand(),
  };
  return table;
}

const Command* FindCommand(const std::string& name) {
  for (const Command& c : Commands()) {
    if (name == c.name) return &c;
  }
  return nullptr;
}

void PrintOverview(std::FILE* out) {
  std::fprintf(out,
               "kelo - image frames through libkelocmn\n\n"
               "usage: kelo COMMAND [options]\n\ncommands:\n");
  for (const Command& c : Commands()) {
    std::fprintf(out, "  %-8s %s\n", c.name, c.summary);
  }
  std::fprintf(out, "\n%s\nkelo help COMMAND shows the options of a command.\n",
               kInputHelp);
}

void PrintCommandHelp(std::FILE* out, const Command& c) {
  std::fprintf(out, "usage:");
  const char* u = c.usage;
  while (*u) {
    const char* nl = std::strchr(u, '\n');
    const size_t n = nl ? static_cast<size_t>(nl - u) : std::strlen(u);
    std::fprintf(out, "%s kelo %.*s\n", u == c.usage ? "" : "      ",
                 static_cast<int>(n), u);
    u += n + (nl ? 1 : 0);
  }
  std::fprintf(out, "\n%s", c.about);
  if (!c.options.empty()) {
    std::fprintf(out, "\noptions:\n");
    for (const OptionSpec& o : c.options) {
      std::string left = std::string("--") + o.name;
      if (o.value != nullptr) left += std::string(" ") + o.value;
      std::fprintf(out, "  %-17s %s\n", left.c_str(), o.help);
    }
  }
  for (const OptionSpec& o : c.options) {
    if (std::strcmp(o.name, "frames") == 0) {
      std::fprintf(out, "\n%s", kInputHelp);
      break;
    }
  }
}

int Main(int argc, char** argv) {
  int status = 1;
  try {
    status = Dispatch(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const UsageError& e) {
    std::fflush(stdout);
    std::fprintf(stderr, "kelo: %s\n", OneLine(e.what()).c_str());
    return 2;
  } catch (const RunError& e) {
    std::fflush(stdout);
    std::fprintf(stderr, "kelo: %s\n", OneLine(e.what()).c_str());
    return 1;
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "kelo: out of memory\n");
    return 1;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "kelo: %s\n", OneLine(e.what()).c_str());
    return 1;
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    std::fprintf(stderr, "kelo: cannot write to standard output\n");
    return 1;
  }
  return status;
}

}  // namespace cli
}  // namespace kelo
