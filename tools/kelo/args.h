// Command-line options of one subcommand: "--name value", "--name=value"
// and flags; everything else (and everything after "--") is positional.
#ifndef KELO_TOOLS_KELO_ARGS_H_
#define KELO_TOOLS_KELO_ARGS_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tools/kelo/format.h"

namespace kelo {
namespace cli {

struct OptionSpec {
  const char* name;   // without the leading "--"
  const char* value;  // placeholder for help ("WxH"), nullptr for a flag
  const char* help;
};

// "WxH" with each side 1 .. kMaxDimension; false (with the reason) else.
bool ParseSize(const std::string& text, int32_t* w, int32_t* h,
               std::string* why);

class Args {
 public:
  // Throws UsageError naming `command` for unknown options and missing
  // values. The last of repeated options wins.
  static Args Parse(const std::string& command,
                    const std::vector<OptionSpec>& specs,
                    const std::vector<std::string>& argv);

  const std::string& command() const { return command_; }
  const std::vector<std::string>& positional() const { return positional_; }
  bool Has(const std::string& name) const { return values_.count(name) > 0; }
  std::string Get(const std::string& name,
                  const std::string& fallback = "") const;
  // Typed values; each throws a UsageError naming the option when the value
  // is malformed or out of range.
  int64_t GetInt(const std::string& name, int64_t fallback, int64_t min,
                 int64_t max) const;
  // Leaves w and h alone when the option is absent.
  void GetSize(const std::string& name, int32_t* w, int32_t* h) const;
  // nullptr when absent.
  const FormatInfo* GetFormat(const std::string& name) const;

  // A copy where option `alias`, when given, also stands as option `name`.
  Args WithAlias(const std::string& alias, const std::string& name) const {
    Args a = *this;
    if (Has(alias)) a.values_[name] = Get(alias);
    return a;
  }

  // A copy where option `from`, and only it, stands as option `to`.
  Args Renamed(const std::string& from, const std::string& to) const {
    Args a = *this;
    a.values_.erase(to);
    if (Has(from)) a.values_[to] = Get(from);
    a.values_.erase(from);
    return a;
  }

  // Throws a UsageError unless there are between min and max positionals.
  void ExpectPositional(size_t min, size_t max) const;

 private:
  std::string command_;
  std::vector<std::string> positional_;
  std::map<std::string, std::string> values_;  // flags map to ""
};

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_ARGS_H_
