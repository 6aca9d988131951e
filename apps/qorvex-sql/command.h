#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace qorvex::tool {

// Exit statuses of the tool.
inline constexpr int kExitOk = 0;
inline constexpr int kExitRejected = 1;
inline constexpr int kExitMisuse = 2;

// Thrown by a command for wrong arguments; main prints the message and the usage and
// exits with kExitMisuse.
struct UsageError {
  std::string message;
};

// The input of a command: the text of a file argument or of standard input, and the
// name used in messages ("<stdin>" for standard input).
struct Input {
  std::string name;
  std::string text;
};

// Reads `path` ("-" or empty for standard input). Throws UsageError when the file
// cannot be read.
Input ReadInput(const std::string& path);

using CommandFn = int (*)(const std::vector<std::string>& args, std::ostream& out,
                          std::ostream& err);

// Registers a sub-command at start-up; each command lives in its own source file with
// one static registration.
struct CommandRegistration {
  CommandRegistration(const char* name, const char* usage, CommandFn fn);
};

}  // namespace qorvex::tool
