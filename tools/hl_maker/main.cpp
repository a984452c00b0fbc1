// Makes a Half-Life level and its texture package from a description.
#include "Build.h"
#include "MadeFiles.h"

#include <filesystem>
#include <iostream>

#include <CLI/CLI.hpp>

namespace {

namespace fs = std::filesystem;
using ql::hl_maker::Bytes;

enum ExitCode { kOk = 0, kDiffers = 1, kUsage = 2, kUnreadable = 3, kMalformed = 4 };

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Makes a Half-Life level and its texture package from a description."};
  std::string description, out, compare;
  bool quiet = false;
  app.add_option("description", description, "the level's description; its name is the level's")->required();
  auto* outOption = app.add_option("--out", out, "folder to write maps/NAME.bsp and maps/NAME.wad into");
  auto* checkOption = app.add_option(
      "--check", compare, "write nothing; compare with the files in this folder (exit code 1 when they differ)");
  outOption->excludes(checkOption);
  app.add_flag("--quiet", quiet, "say nothing but errors");
  app.set_version_flag("--version", "ql-make-hl-level " QL_VERSION);
  try {
    app.parse(argc, argv);
    if (outOption->count() + checkOption->count() == 0) throw CLI::RequiredError("--out or --check");
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kOk : kUsage;
  }
  const auto text = ql::maker::readFile(description);
  if (!text) {
    std::cerr << "cannot read " << description << "\n";
    return kUnreadable;
  }
  try {
    using namespace ql::hl_maker;
    const std::string name = fs::path(description).stem().string();
    const LevelTables tables = buildLevel(parseDescription(*text), name + ".wad");
    std::vector<IndexedTexture> textures;
    std::map<std::string, std::pair<int, int>> sizes;
    for (const std::string& texture : tables.textures) {
      textures.push_back(makeTexture(texture));
      sizes[texture] = {textures.back().width, textures.back().height};
    }
    const fs::path folder = fs::path(checkOption->count() > 0 ? compare : out) / "maps";
    const std::vector<std::pair<fs::path, Bytes>> files{{folder / (name + ".bsp"), encodeLevel(tables, sizes)},
                                                        {folder / (name + ".wad"), encodePackage(textures)}};
    bool same = true;
    for (const auto& [path, bytes] : files) {
      if (checkOption->count() > 0) {
        same = ql::maker::isSame(path, bytes, path.string()) && same;
      } else if (!ql::maker::writeFile(path, bytes)) {
        std::cerr << "cannot write " << path.string() << "\n";
        return kUnreadable;
      }
    }
    if (!quiet)
      std::cerr << tables.faces.size() << " faces, " << tables.leaves.size() << " leaves, " << tables.lighting.size()
                << " bytes of light\n";
    return same ? kOk : kDiffers;
  } catch (const std::exception& fault) {
    std::cerr << description << ": " << fault.what() << "\n";
    return kMalformed;
  }
}
