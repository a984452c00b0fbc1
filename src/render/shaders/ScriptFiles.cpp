#include "platform/host/Fault.h"
#include "platform/host/Files.h"
#include "render/shaders/Shaders.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

namespace ql::render::shaders {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLargestScript = std::uint64_t{1} << 26;

/// Nothing for a file that cannot be read.
std::optional<std::string> readScript(const std::string& path) {
  try {
    const std::vector<std::byte> bytes = host::readFile(path, kLargestScript);
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  } catch (const host::FileFault&) {
    return std::nullopt;
  }
}

}  // namespace

void ScriptFiles::addFolder(std::string_view folder) {
  const std::optional<fs::path> found = host::findFolder(folder);
  if (!found) return;
  std::vector<std::string> scripts;
  std::error_code fault;
  for (fs::directory_iterator file(*found, fault), end; !fault && file != end; file.increment(fault)) {
    std::error_code ignored;
    if (file->is_regular_file(ignored) && host::equalIgnoringCase(file->path().extension().string(), ".shader"))
      scripts.push_back(file->path().string());
  }
  std::ranges::sort(scripts, {}, [](const std::string& path) { return std::pair(host::foldCase(path), path); });
  for (const std::string& script : scripts) addFile(script);
}

void ScriptFiles::addFile(const std::string& path) {
  std::optional<std::string> script = readScript(path);
  if (!script) return;
  const std::size_t file = files_.size();
  files_.push_back(path);
  for (ScriptEntry& entry : indexScript(*script)) places_.try_emplace(std::move(entry.name), Place{file, entry.body});
  script_ = std::move(*script);
  scriptFile_ = file;
}

std::int16_t ScriptFiles::load(engine::EngineContext& context, const std::string& name) {
  const auto found = places_.find(name);
  if (found == places_.end()) return 0;
  const Place place = found->second;
  if (scriptFile_ != place.file) {
    std::optional<std::string> script = readScript(files_[place.file]);
    if (!script) return 0;
    script_ = std::move(*script);
    scriptFile_ = place.file;
  }
  return addShader(context, name, parseShaderBody(script_, place.body), true);
}

}  // namespace ql::render::shaders
