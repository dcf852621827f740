#include "tools/kelo/args.h"

#include <cctype>

#include "tools/kelo/error.h"

namespace kelo {
namespace cli {
namespace {

// Decimal digits only, at most 18 of them.
bool ParseDigits(const std::string& s, int64_t* out) {
  if (s.empty() || s.size() > 18) return false;
  int64_t v = 0;
  for (char c : s) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    v = v * 10 + (c - '0');
  }
  *out = v;
  return true;
}

}  // namespace

bool ParseSize(const std::string& text, int32_t* w, int32_t* h,
               std::string* why) {
  const size_t x = text.find_first_of("xX");
  int64_t a = 0, b = 0;
  if (x == std::string::npos || !ParseDigits(text.substr(0, x), &a) ||
      !ParseDigits(text.substr(x + 1), &b)) {
    *why = "'" + text + "' is not a size WxH";
    return false;
  }
  if (a < 1 || b < 1 || a > kMaxDimension || b > kMaxDimension) {
    *why = "size " + text + " is out of range (each side 1 to " +
           std::to_string(kMaxDimension) + ")";
    return false;
  }
  *w = static_cast<int32_t>(a);
  *h = static_cast<int32_t>(b);
  return true;
}

Args Args::Parse(const std::string& command,
                 const std::vector<OptionSpec>& specs,
                 const std::vector<std::string>& argv) {
  Args a;
  a.command_ = command;
  bool options_done = false;
  for (size_t i = 0; i < argv.size(); ++i) {
    const std::string& arg = argv[i];
    if (options_done || arg.size() < 2 || arg[0] != '-') {
      a.positional_.push_back(arg);
      continue;
    }
    if (arg == "--") {
      options_done = true;
      continue;
    }
    if (arg[1] != '-') {
      throw UsageError(command + ": unknown option '" + arg + "'");
    }
    const size_t eq = arg.find('=');
    const std::string name = arg.substr(2, eq == std::string::npos
                                               ? std::string::npos
                                               : eq - 2);
    const OptionSpec* spec = nullptr;
    for (const OptionSpec& s : specs) {
      if (name == s.name) spec = &s;
    }
    if (spec == nullptr) {
      throw UsageError(command + ": unknown option '--" + name + "'");
    }
    if (spec->value == nullptr) {
      if (eq != std::string::npos) {
        throw UsageError(command + ": option --" + name + " takes no value");
      }
      a.values_[name] = "";
    } else if (eq != std::string::npos) {
      a.values_[name] = arg.substr(eq + 1);
    } else if (i + 1 < argv.size()) {
      a.values_[name] = argv[++i];
    } else {
      throw UsageError(command + ": option --" + name + " needs a value " +
                       spec->value);
    }
  }
  return a;
}

std::string Args::Get(const std::string& name,
                      const std::string& fallback) const {
  const auto it = values_.find(name);
  return it == values_.end() ? fallback : it->second;
}

int64_t Args::GetInt(const std::string& name, int64_t fallback, int64_t min,
                     int64_t max) const {
  if (!Has(name)) return fallback;
  const std::string v = Get(name);
  int64_t n = 0;
  if (!ParseDigits(v, &n) || n < min || n > max) {
    throw UsageError(command_ + ": --" + name + " must be a number from " +
                     std::to_string(min) + " to " + std::to_string(max) +
                     ", not '" + v + "'");
  }
  return n;
}

void Args::GetSize(const std::string& name, int32_t* w, int32_t* h) const {
  if (!Has(name)) return;
  std::string why;
  if (!ParseSize(Get(name), w, h, &why)) {
    throw UsageError(command_ + ": --" + name + ": " + why);
  }
}

const FormatInfo* Args::GetFormat(const std::string& name) const {
  if (!Has(name)) return nullptr;
  const FormatInfo* f = LookupFormat(Get(name));
  if (f == nullptr) {
    throw UsageError(command_ + ": unknown format '" + Get(name) +
                     "' (kelo info --formats lists them)");
  }
  return f;
}

void Args::ExpectPositional(size_t min, size_t max) const {
  const size_t n = positional_.size();
  if (n < min) {
    throw UsageError(command_ + ": missing file argument (see kelo help " +
                     command_ + ")");
  }
  if (n > max) {
    throw UsageError(command_ + ": unexpected argument '" + positional_[max] +
                     "' (see kelo help " + command_ + ")");
  }
}

}  // namespace cli
}  // namespace kelo
