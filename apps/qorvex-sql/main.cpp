// qorvex-sql: the language half and the headless model for scripts, editors and tests.
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>

#include "command.h"

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
        "Reads FILE, or standard input when FILE is absent or \"-\".\n"
        "commands:\n";
  for (const auto& [name, cmd] : Commands())
    os << "  " << name << " " << cmd.usage << "\n";
}

}  // namespace

CommandRegistration::CommandRegistration(const char* name, const char* usage, CommandFn fn) {
  Commands()[name] = Command{usage, fn};
}

Input ReadInput(const std::string& path) {
  Input in;
  if (path.empty() || path == "-") {
    in.name = "<stdin>";
    in.text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    return in;
  }
  std::ifstream file(path, std::ios::binary);
  if (!file)
    throw UsageError{"cannot read " + path};
  std::ostringstream ss;
  ss << file.rdbuf();
  in.name = path;
  in.text = ss.str();
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
