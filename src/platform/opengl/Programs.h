/// @file
/// Shader programs and sampler objects, each made once.
#pragma once

#include "platform/opengl/DrawState.h"
#include "platform/opengl/GlObject.h"
#include "platform/opengl/Shadow.h"

#include <cstdint>
#include <string>
#include <unordered_map>

namespace ql::opengl {

/// A program of stages that are given as text; an empty geometry stage is left out.
/// @throws std::runtime_error with the driver's words when it does not accept a program
GlProgram makeProgram(const std::string& vertex, const std::string& geometry, const std::string& fragment);

class Programs {
 public:
  /// @param built counts the programs
  Programs(Shadow& shadow, std::uint64_t& built) : shadow_(shadow), built_(built) {}
  /// @throws std::runtime_error with the driver's words when it does not accept a program
  GLuint programFor(const ShaderKey& key);

 private:
  Shadow& shadow_;
  std::uint64_t& built_;
  std::unordered_map<ShaderKey, GlProgram, ShaderKeyHash> programs_;
};

class Samplers {
 public:
  GLuint samplerFor(const SamplerKey& key);

 private:
  struct Hash {
    std::size_t operator()(const SamplerKey& key) const;
  };
  std::unordered_map<SamplerKey, GlSampler, Hash> samplers_;
};

}  // namespace ql::opengl
