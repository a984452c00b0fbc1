/// @file
/// From shader scripts to the shader table.
#pragma once

#include "engine/EngineContext.h"
#include "render/shaders/ShaderScript.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ql::render::shaders {

/// Puts a shader into the table: in place of one with exactly that name, whose handles then mean the new one, else in
/// the first free slot or a new one. Each stage gets a white material of its own.
/// @param loadTextures load the stages' pictures; off: find them among the textures that are loaded
/// @return its index @throws engine::EngineError 6 when a table is full
std::int16_t addShader(engine::EngineContext& context, const std::string& name, const ScriptShader& shader,
                       bool loadTextures);
/// The first shader of that name, in any letter case; null when there is none.
std::shared_ptr<ShaderHandle> findShader(engine::EngineContext& context, std::string_view name);

/// Script files and the names of the shaders in them. Of two shaders with one name the first counts.
class ScriptFiles {
 public:
  /// Adds every file "*.shader" of a folder, in order of their names. A folder or file that cannot be read adds none.
  void addFolder(std::string_view folder);
  /// Reads the shader of exactly that name into the table, its textures loaded; 0 when no script defines it.
  std::int16_t load(engine::EngineContext& context, const std::string& name);
  /// Whether a script defines the shader of exactly that name.
  bool has(const std::string& name) const { return places_.contains(name); }
  /// Lets go of the text that load() keeps for the next shader.
  void dropText() { script_ = {}, scriptFile_ = static_cast<std::size_t>(-1); }
  std::size_t shaderCount() const { return places_.size(); }

 private:
  struct Place {
    std::size_t file = 0, body = 0;
  };
  void addFile(const std::string& path);

  std::vector<std::string> files_;
  std::unordered_map<std::string, Place> places_;
  std::string script_;  ///< the file that was read last: a level's shaders mostly stand side by side
  std::size_t scriptFile_ = static_cast<std::size_t>(-1);
};

}  // namespace ql::render::shaders
