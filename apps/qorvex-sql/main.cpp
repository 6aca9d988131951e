// qorvex-sql: the language half and the headless model for scripts, editors and tests.
#include <cstdio>
#include <iostream>
#include <map>

#include "command.h"
#include "qorvex/version.h"

namespace qorvex::tool {
namespace {

struct Command {
  const char* usage;
  CommandFn fn;
};

std::map<std::string, Command>& Commands() {
  static std::map<std::string, Command> commands;
  return commands;
}

void PrintUsage(std::ostream& os) {
  os << "usage: qorvex-sql COMMAND [OPTIONS] [FILE]\n"
        "       qorvex-sql --version\n"
        "Reads FILE, or standard input when FILE is absent or \"-\".\n"
        "commands:\n";
  for (const auto& [name, cmd] : Commands())
    os << "  " << name << " " << cmd.usage << "\n";
}

}  // namespace

CommandRegistration::CommandRegistration(const char* name, const char* usage, CommandFn fn) {
  Commands()[name] = Command{usage, fn};
}

// The input is read in one go: a file by its size, standard input in large blocks.
Input ReadInput(const std::string& path) {
  Input in;
  const bool standardInput = path.empty() || path == "-";
  in.name = standardInput ? "<stdin>" : path;
  std::FILE* file = standardInput ? stdin : std::fopen(path.c_str(), "rb");
  if (file == nullptr)
    throw UsageError{"cannot read " + path};
  struct Close {
    std::FILE* file;
    bool own;
    ~Close() {
      if (own)
        std::fclose(file);
    }
  } close{file, !standardInput};
  if (!standardInput && std::fseek(file, 0, SEEK_END) == 0) {
    const long size = std::ftell(file);
    if (size > 0)
      in.text.reserve(static_cast<std::size_t>(size));
    std::rewind(file);
  }
  constexpr std::size_t kBlock = 1 << 16;
  for (;;) {
    const std::size_t have = in.text.size();
    in.text.resize(have + kBlock);
    const std::size_t got = std::fread(in.text.data() + have, 1, kBlock, file);
    in.text.resize(have + got);
    if (got < kBlock)
      break;
  }
  if (std::ferror(file))
    throw UsageError{"cannot read " + in.name};
  return in;
}

}  // namespace qorvex::tool

int main(int argc, char** argv) {
  using namespace qorvex::tool;
  std::ios::sync_with_stdio(false);
  if (argc < 2) {
    PrintUsage(std::cerr);
    return kExitMisuse;
  }
  std::string name = argv[1];
  if (name == "help" || name == "--help" || name == "-h") {
    PrintUsage(std::cout);
    return kExitOk;
  }
  if (name == "--version" || name == "version") {
    std::cout << "qorvex-sql " << QORVEX_VERSION_STRING << "\n";
    return kExitOk;
  }
  auto it = Commands().find(name);
  if (it == Commands().end()) {
    std::cerr << "qorvex-sql: unknown command \"" << name << "\"\n";
    PrintUsage(std::cerr);
    return kExitMisuse;
  }
  std::vector<std::string> args(argv + 2, argv + argc);
  try {
    int rc = it->second.fn(args, std::cout, std::cerr);
    std::cout.flush();
    return rc;
  } catch (const UsageError& e) {
    std::cerr << "qorvex-sql " << name << ": " << e.message << "\n"
              << "usage: qorvex-sql " << name << " " << it->second.usage << "\n";
    return kExitMisuse;
  } catch (const std::exception& e) {
    std::cerr << "qorvex-sql " << name << ": error: " << e.what() << "\n";
    return kExitRejected;
  }
}
