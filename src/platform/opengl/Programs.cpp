#include "platform/opengl/Programs.h"

#include "platform/opengl/ShaderText.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ql::opengl {
namespace {

// Drivers keep machine code of each. A host uses some tens; one that makes ever new states has them built anew.
constexpr std::size_t kMostPrograms = 512;

template <class GetLength, class GetText>
std::string messages(GLuint name, GetLength&& length, GetText&& get) {
  GLint size = 0;
  length(name, GL_INFO_LOG_LENGTH, &size);
  std::string out(static_cast<std::size_t>(std::max(size, 1)), '\0');
  get(name, static_cast<GLsizei>(out.size()), nullptr, out.data());
  return out;
}

void attach(GLuint program, GLenum stage, const std::string& text) {
  const GLuint shader = glCreateShader(stage);
  const char* source = text.c_str();
  glShaderSource(shader, 1, &source, nullptr);
  glCompileShader(shader);
  GLint good = 0;
  glGetShaderiv(shader, GL_COMPILE_STATUS, &good);
  glAttachShader(program, shader);
  const std::string why = good ? "" : messages(shader, glGetShaderiv, glGetShaderInfoLog);
  glDeleteShader(shader);  // the program keeps it
  if (!good) throw std::runtime_error("the OpenGL driver does not accept a shader: " + why + "\n" + text);
}

GLint wrapOf(std::uint8_t address) {
  switch (static_cast<device::Address>(address)) {
    case device::Address::Mirror:
      return GL_MIRRORED_REPEAT;
    case device::Address::Clamp:
      return GL_CLAMP_TO_EDGE;
    case device::Address::Border:
      return GL_CLAMP_TO_BORDER;
    default:
      return GL_REPEAT;
  }
}

GLint minFilterOf(const SamplerKey& key) {
  if (key.mip == 2) return key.minLinear ? GL_LINEAR_MIPMAP_LINEAR : GL_NEAREST_MIPMAP_LINEAR;
  // One level alone: the mip filter finds it even when it is not the first.
  if (key.mip == 1 || key.firstLevel > 0) return key.minLinear ? GL_LINEAR_MIPMAP_NEAREST : GL_NEAREST_MIPMAP_NEAREST;
  return key.minLinear ? GL_LINEAR : GL_NEAREST;
}

}  // namespace

GlProgram makeProgram(const std::string& vertex, const std::string& geometry, const std::string& fragment) {
  GlProgram made = GlProgram::make();
  attach(made.name(), GL_VERTEX_SHADER, vertex);
  if (!geometry.empty()) attach(made.name(), GL_GEOMETRY_SHADER, geometry);
  attach(made.name(), GL_FRAGMENT_SHADER, fragment);
  glLinkProgram(made.name());
  GLint good = 0;
  glGetProgramiv(made.name(), GL_LINK_STATUS, &good);
  if (!good)
    throw std::runtime_error("the OpenGL driver does not accept a program: " +
                             messages(made.name(), glGetProgramiv, glGetProgramInfoLog));
  return made;
}

GLuint Programs::programFor(const ShaderKey& key) {
  const auto known = programs_.find(key);
  if (known != programs_.end()) return known->second.name();
  if (programs_.size() >= kMostPrograms) {
    shadow_.program(0);
    programs_.clear();
  }
  GlProgram made =
      makeProgram(vertexText(key), expands(key.topology) ? geometryText(key) : std::string(), fragmentText(key));
  const GLuint program = made.name();
  const auto block = [program](const char* name, GLuint binding) {
    const GLuint index = glGetUniformBlockIndex(program, name);
    if (index != GL_INVALID_INDEX) glUniformBlockBinding(program, index, binding);
  };
  block("Draw", kDrawBlock);
  block("Lights", kLightBlock);
  shadow_.program(program);
  for (GLint stage = 0; stage < static_cast<GLint>(device::kStages); ++stage)
    glUniform1i(glGetUniformLocation(program, ("texture" + std::to_string(stage)).c_str()), stage);
  ++built_;
  programs_.emplace(key, std::move(made));
  return program;
}

std::size_t Samplers::Hash::operator()(const SamplerKey& key) const {
  return std::hash<std::string_view>()({reinterpret_cast<const char*>(&key), sizeof key});
}

GLuint Samplers::samplerFor(const SamplerKey& key) {
  const auto known = samplers_.find(key);
  if (known != samplers_.end()) return known->second.name();
  GlSampler made = GlSampler::make();
  const GLuint name = made.name();
  glSamplerParameteri(name, GL_TEXTURE_WRAP_S, wrapOf(key.addressU));
  glSamplerParameteri(name, GL_TEXTURE_WRAP_T, wrapOf(key.addressV));
  glSamplerParameteri(name, GL_TEXTURE_MAG_FILTER, key.magLinear ? GL_LINEAR : GL_NEAREST);
  glSamplerParameteri(name, GL_TEXTURE_MIN_FILTER, minFilterOf(key));
  if (key.firstLevel > 0) glSamplerParameterf(name, GL_TEXTURE_MIN_LOD, key.firstLevel);
  if (key.firstLevel > 0 && key.mip == 0) glSamplerParameterf(name, GL_TEXTURE_MAX_LOD, key.firstLevel);
  if (key.bias != 0) glSamplerParameterf(name, GL_TEXTURE_LOD_BIAS, static_cast<float>(key.bias) / 256.0f);
  if (key.anisotropy > 1 && epoxy_has_gl_extension("GL_EXT_texture_filter_anisotropic"))
    glSamplerParameterf(name, GL_TEXTURE_MAX_ANISOTROPY_EXT, key.anisotropy);
  std::array<float, 4> border{};
  for (std::size_t i = 0; i < 4; ++i) {
    constexpr std::array kShifts{16, 8, 0, 24};
    border[i] = static_cast<float>(key.border >> kShifts[i] & 255) / 255.0f;
  }
  glSamplerParameterfv(name, GL_TEXTURE_BORDER_COLOR, border.data());
  samplers_.emplace(key, std::move(made));
  return name;
}

}  // namespace ql::opengl
