#include "platform/opengl/VertexArrays.h"

#include "platform/opengl/ShaderText.h"

namespace ql::opengl {

GlVertexArray VertexArrays::make(const Key& key) {
  namespace fvf = device::fvf;
  GlVertexArray made = GlVertexArray::make();
  shadow_.vertexArray(made.name());
  shadow_.arrayBuffer(key.buffer);
  glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indices_);
  std::uintptr_t offset = 0;
  const auto attribute = [&](GLuint place, GLint components, GLenum type, std::uintptr_t bytes) {
    glEnableVertexAttribArray(place);
    glVertexAttribPointer(place, components, type, type == GL_UNSIGNED_BYTE, static_cast<GLsizei>(key.stride),
                          reinterpret_cast<const void*>(offset));
    offset += bytes;
  };
  if (key.vertexFormat & fvf::kXyzRhw)
    attribute(kPosition, 4, GL_FLOAT, 16);
  else
    attribute(kPosition, 3, GL_FLOAT, 12);
  if (key.vertexFormat & fvf::kNormal) attribute(kNormal, 3, GL_FLOAT, 12);
  if (key.vertexFormat & fvf::kPointSize) attribute(kPointSize, 1, GL_FLOAT, 4);
  if (key.vertexFormat & fvf::kDiffuse) attribute(kDiffuse, GL_BGRA, GL_UNSIGNED_BYTE, 4);
  if (key.vertexFormat & fvf::kSpecular) attribute(kSpecular, GL_BGRA, GL_UNSIGNED_BYTE, 4);
  const std::uint32_t sets = (key.vertexFormat & fvf::kTextureCountMask) >> fvf::kTextureCountShift;
  for (std::uint32_t i = 0; i < sets; ++i) attribute(kFirstSet + i, 2, GL_FLOAT, 8);
  return made;
}

void VertexArrays::bind(GLuint buffer, std::uint32_t vertexFormat, std::uint32_t stride) {
  const Key key{buffer, vertexFormat, stride};
  auto known = arrays_.find(key);
  if (known == arrays_.end()) known = arrays_.emplace(key, make(key)).first;
  shadow_.vertexArray(known->second.name());
}

void VertexArrays::forget(GLuint buffer) {
  for (auto at = arrays_.lower_bound({buffer, 0, 0}); at != arrays_.end() && at->first.buffer == buffer;) {
    shadow_.forgetVertexArray(at->second.name());
    at = arrays_.erase(at);
  }
  shadow_.forgetArrayBuffer(buffer);
}

}  // namespace ql::opengl
