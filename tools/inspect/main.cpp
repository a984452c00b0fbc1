// Prints the facts of files, one JSON object each.
#include "Report.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace {

constexpr int kUsage = 2, kUnreadable = 3, kMalformed = 4, kLimit = 6;

int exitCode(const ql::host::FileFault& fault) {
  switch (fault.id) {
    case ql::host::Fault::Missing:
    case ql::host::Fault::Unreadable:
      return kUnreadable;
    case ql::host::Fault::TooLarge:
      return kLimit;
    default:
      return kMalformed;
  }
}

/// Prints one file's object; the exit code that it calls for.
int inspect(const std::string& name, bool validate, bool quiet) {
  nlohmann::ordered_json json{{"file", ql::host::toUtf8(name)}};
  int code = 0;
  try {
    const std::vector<std::byte> bytes = ql::host::readFile(name);
    json["size"] = bytes.size();
    json.update(ql::inspect::report(name, bytes, validate));
    if (!json.value("valid", true)) code = kMalformed;
  } catch (const ql::host::FileFault& fault) {
    code = exitCode(fault);
    json["valid"] = false;
    json["fault"] = fault.what();
    if (!quiet) std::cerr << "ql-inspect: " << name << ": " << fault.what() << '\n';
  }
  std::cout << json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Prints the facts of levels, meshes, archives and pictures, one JSON object a file."};
  std::vector<std::string> files;
  bool validate = false, quiet = false, verbose = false;
  app.add_option("FILE", files,
                 "Quake 3 and Half-Life levels; WAD3 packages; shader scripts; QLOF, QLMESH, 3DS, DXE and X meshes; "
                 "PAK archives; BMP, "
                 "JPG, TGA, PNG and DDS pictures")
      ->required();
  app.add_flag("--validate", validate, "Read each file as the engine does, and say whether it would load");
  app.add_flag("--quiet", quiet, "No messages on standard error");
  app.add_flag("--verbose", verbose, "Name each file on standard error before it is read");
  app.set_version_flag("--version", "ql-inspect " QL_VERSION);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsage;
  }
  int worst = 0;
  for (const std::string& file : files) {
    if (verbose) std::cerr << file << '\n';
    worst = std::max(worst, inspect(file, validate, quiet));
  }
  return worst;
}
