#pragma once

// Runs the qorvex-sql tool as a program, for the tests of its commands.

#include <stdlib.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace qorvex::tooltest {

struct ToolRun {
  int status = -1;
  std::string out;
  std::string err;
};

inline std::string ReadFileText(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

// A temporary directory for the files of tool runs, removed with them.
class ToolFiles {
 public:
  ToolFiles() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qorvex-tool-XXXXXX").string();
    if (::mkdtemp(pattern.data()) != nullptr)
      dir_ = pattern;
  }
  ~ToolFiles() {
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
  }
  ToolFiles(const ToolFiles&) = delete;
  ToolFiles& operator=(const ToolFiles&) = delete;

  const std::filesystem::path& Dir() const { return dir_; }
  // Writes `text` to the file `name` of the directory; returns its path.
  std::string Write(const std::string& text, const std::string& name = "input.sql") const {
    const std::filesystem::path file = dir_ / name;
    std::ofstream(file, std::ios::binary) << text;
    return file.string();
  }
  std::string Read(const std::string& name) const { return ReadFileText(dir_ / name); }

 private:
  std::filesystem::path dir_;
};

// Runs `qorvex-sql args` (quoted for the shell already) with `input` as its standard input.
inline ToolRun RunTool(const std::string& args, const std::string& input = "") {
  ToolFiles files;
  const std::string command = std::string(QORVEX_TOOL) + " " + args + " < " +
                              files.Write(input, "stdin") + " 2> " + (files.Dir() / "err").string();
  ToolRun run;
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr)
    return run;
  char chunk[4096];
  while (std::size_t n = std::fread(chunk, 1, sizeof chunk, pipe))
    run.out.append(chunk, n);
  const int status = ::pclose(pipe);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  run.err = files.Read("err");
  return run;
}

}  // namespace qorvex::tooltest
