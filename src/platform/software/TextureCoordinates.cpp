#include "platform/software/TextureCoordinates.h"

#include "platform/software/VertexBatch.h"

#include <algorithm>
#include <cstring>

namespace ql::software {
namespace {

using Kind = CoordinateSource::Kind;

struct Quadruples {
  Lanes<float> c[4];
};

void fill(Lanes<float>& out, float value) {
  for (int i = 0; i < kLanes; ++i) out[i] = value;
}

void loadPairs(const VertexBatch& batch, std::int32_t offset, Lanes<float>& u, Lanes<float>& v) {
  for (int i = 0; i < kLanes; ++i) {
    float pair[2];
    std::memcpy(pair, batch.source[static_cast<std::size_t>(i)] + offset, sizeof pair);
    u[i] = pair[0];
    v[i] = pair[1];
  }
}

void generate(Kind kind, const VertexBatch& batch, Quadruples& out) {
  if (kind == Kind::Reflection) {
    const Vectors &n = batch.normal, &e = batch.toEye;
    Lanes<float> twice;
    dot(n, e, twice);
    for (int i = 0; i < kLanes; ++i) {
      twice[i] *= 2;
      out.c[0][i] = twice[i] * n.x[i] - e.x[i];
      out.c[1][i] = twice[i] * n.y[i] - e.y[i];
      out.c[2][i] = twice[i] * n.z[i] - e.z[i];
    }
  } else {
    const Vectors& from = kind == Kind::Normal ? batch.normal : batch.seen;
    out.c[0] = from.x;
    out.c[1] = from.y;
    out.c[2] = from.z;
  }
  fill(out.c[3], 1);
}

// Row vectors times the matrix, one column of it at a time.
void transformColumn(const Quadruples& in, float m1, float m2, float m3, float m4, Lanes<float>& out) {
  for (int i = 0; i < kLanes; ++i) out[i] = in.c[0][i] * m1 + in.c[1][i] * m2 + in.c[2][i] * m3 + in.c[3][i] * m4;
}

}  // namespace

CoordinateSource coordinateSourceOf(const device::State& state, std::size_t stage, bool onScreen, bool present) {
  const device::StageStates& s = state.stages[stage];
  CoordinateSource out;
  if (onScreen) return out;
  const std::uint32_t generated = s.texCoordIndex >> 16;
  if (generated >= 1 && generated <= 3)
    out.kind = static_cast<Kind>(generated);
  else if (!present)
    return out;
  out.transformed = static_cast<int>(std::min(s.textureTransformFlags & 0xFF, 4u));
  out.projected = out.transformed >= 2 && (s.textureTransformFlags & 0x100) != 0;
  out.matrix = state.textureTransforms[stage];
  return out;
}

void textureCoordinates(const Pipeline& p, std::size_t stage, VertexBatch& batch) {
  const CoordinateSource& source = p.coordinates[stage];
  const std::int32_t offset = p.layout.coordinates[stage];
  Lanes<float>* out = batch.attributes + p.attributes.uv[stage];
  if (source.kind == Kind::Vertex && source.transformed == 0) {
    if (offset >= 0) {
      loadPairs(batch, offset, out[0], out[1]);
    } else {
      fill(out[0], 0);
      fill(out[1], 0);
    }
    return;
  }
  Quadruples in;
  if (source.kind == Kind::Vertex) {
    loadPairs(batch, offset, in.c[0], in.c[1]);
    fill(in.c[2], 1);
    fill(in.c[3], 0);
  } else {
    generate(source.kind, batch, in);
  }
  if (source.transformed == 0) {
    out[0] = in.c[0];
    out[1] = in.c[1];
    return;
  }
  const math::Mat4& m = source.matrix;
  transformColumn(in, m.m11, m.m21, m.m31, m.m41, out[0]);
  if (source.transformed == 1)
    fill(out[1], 0);
  else
    transformColumn(in, m.m12, m.m22, m.m32, m.m42, out[1]);
  if (!source.projected) return;
  Lanes<float>& divisor = batch.attributes[p.attributes.divisor[stage]];
  if (source.transformed == 2)
    divisor = out[1];
  else if (source.transformed == 3)
    transformColumn(in, m.m13, m.m23, m.m33, m.m43, divisor);
  else
    transformColumn(in, m.m14, m.m24, m.m34, m.m44, divisor);
}

}  // namespace ql::software
